// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Description/CLanguagesType.h"

#include "Common/CZPKError.h"
#include "Common/CZPKStatus.h"
#include "Description/CElementReader.h"
#include "Description/ZPKXMLDefine.h"

namespace varno_zpk {

CLanguagesType::CLanguagesType(const CXMLElement& element) {
    CreateAttribute(element);
    CreateChildren(element);
}

CLanguagesType::~CLanguagesType() {
    for (std::unique_ptr<CLanguageType>& language : languages) {
        language.reset();
    }
}

void CLanguagesType::CreateAttribute(const CXMLElement& element) {
    if (!CElementReader::ReadAttribute(element, ATTR_FALLBACKCODE, fallBackCode)) {
        throw CZPKError(CZPKStatus::ERROR_FAILED_LOAD_LANGUAGES);
    }
}

void CLanguagesType::CreateChildren(const CXMLElement& element) {
    if (element.GetChildCount() == 0) {
        throw CZPKError(CZPKStatus::ERROR_FAILED_LOAD_LANGUAGES);
    }
    CElementReader::ForEachChildElement(element, [this](const CXMLElement* child) {
        if (child->GetNameString() == TAG_LANGUAGE) {
            languages.push_back(std::make_unique<CLanguageType>(*child));
        }
    });
}

}  // namespace varno_zpk
