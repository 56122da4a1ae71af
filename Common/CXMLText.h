// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "Common/CXMLNode.h"

namespace varno_zpk {

/// A stretch of character data, references resolved.
class CXMLText : public CXMLNode {
public:
    CXMLText() = default;
    ~CXMLText() override;

    void SetStringValue(const char* value) override;
    const char* GetStringValue() const override;
    const std::string& GetStringValueString() const override;
    CXMLNode* Clone() const override;

private:
    std::string m_value;
};

}  // namespace varno_zpk
