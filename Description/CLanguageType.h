// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "Common/CXMLElement.h"

namespace varno_zpk {

/// One user-interface language that the package offers.
class CLanguageType {
public:
    /// Raises `CZPKError` when the element has no "Code".
    explicit CLanguageType(const CXMLElement& element);

    std::string code;

private:
    void CreateAttribute(const CXMLElement& element);
};

}  // namespace varno_zpk
