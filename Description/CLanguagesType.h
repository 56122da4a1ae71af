// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Common/CXMLElement.h"
#include "Description/CLanguageType.h"

namespace varno_zpk {

/// "UILang/Languages.xml": the languages that the package offers, and the one to fall back on.
class CLanguagesType {
public:
    /// Raises `CZPKError` when the element has no "FallBackCode" or no child node at all, or when a
    /// language has no code.
    explicit CLanguagesType(const CXMLElement& element);
    CLanguagesType(const CLanguagesType&) = delete;
    CLanguagesType& operator=(const CLanguagesType&) = delete;
    /// Deletes the languages front to back.
    ~CLanguagesType();

    /// In document order.
    std::vector<std::unique_ptr<CLanguageType>> languages;
    std::string fallBackCode;

private:
    void CreateAttribute(const CXMLElement& element);
    void CreateChildren(const CXMLElement& element);
};

}  // namespace varno_zpk
