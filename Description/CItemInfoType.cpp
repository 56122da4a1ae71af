// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Description/CItemInfoType.h"

#include "Description/CElementReader.h"
#include "Description/ZPKXMLDefine.h"

namespace varno_zpk {

CItemInfoType::CItemInfoType(CXMLElement* element) {
    CreateAttribute(element);
}

void CItemInfoType::CreateAttribute(CXMLElement* element) {
    CElementReader::ReadAttribute(CElementReader::Require(element), ATTR_DISPLAYNAME, displayName);
}

}  // namespace varno_zpk
