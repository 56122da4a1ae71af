// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Description/CLanguageType.h"

#include "Common/CZPKError.h"
#include "Common/CZPKStatus.h"
#include "Description/CElementReader.h"
#include "Description/ZPKXMLDefine.h"

namespace varno_zpk {

CLanguageType::CLanguageType(const CXMLElement& element) {
    CreateAttribute(element);
}

void CLanguageType::CreateAttribute(const CXMLElement& element) {
    if (!CElementReader::ReadAttribute(element, ATTR_CODE, code)) {
        throw CZPKError(CZPKStatus::ERROR_FAILED_LOAD_LANGUAGES);
    }
}

}  // namespace varno_zpk
