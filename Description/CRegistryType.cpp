// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Description/CRegistryType.h"

#include "Description/CElementReader.h"
#include "Description/ZPKXMLDefine.h"

namespace varno_zpk {

CRegistryType::CRegistryType(CXMLElement* element) {
    CreateAttribute(element);
}

void CRegistryType::CreateAttribute(CXMLElement* element) {
    CElementReader::ReadAttribute(CElementReader::Require(element), ATTR_KEYNAME, keyName);
}

}  // namespace varno_zpk
