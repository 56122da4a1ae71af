// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "Common/CXMLNode.h"

namespace varno_zpk {

/// A name and its value, in an element's attribute list.
class CXMLAttribute : public CXMLNode {
public:
    CXMLAttribute() = default;
    ~CXMLAttribute() override;

    void SetName(const char* name) override;
    const char* GetName() const override;
    const std::string& GetNameString() const override;
    void SetStringValue(const char* value) override;
    const char* GetStringValue() const override;
    const std::string& GetStringValueString() const override;
    CXMLNode* Clone() const override;

private:
    std::string m_name;
    std::string m_value;
};

}  // namespace varno_zpk
