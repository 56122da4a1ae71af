// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Description/CStartupType.h"

#include "Description/CElementReader.h"
#include "Description/ZPKXMLDefine.h"

namespace varno_zpk {

CStartupType::CStartupType(CXMLElement* element) {
    CreateAttribute(element);
}

void CStartupType::CreateAttribute(CXMLElement* element) {
    const CXMLElement& root = CElementReader::Require(element);
    CElementReader::ReadAttribute(root, ATTR_EXEC, exec);
    CElementReader::ReadAttribute(root, ATTR_PARAM, param);
}

}  // namespace varno_zpk
