// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Description/CUninstallXMLType.h"

#include "Description/CElementReader.h"
#include "Description/ZPKXMLDefine.h"

namespace varno_zpk {

CUninstallXMLType::CUninstallXMLType(CXMLElement* element) {
    CreateAttribute(element);
}

void CUninstallXMLType::CreateAttribute(CXMLElement* element) {
    CElementReader::ReadAttribute(CElementReader::Require(element), ATTR_APPNAME, appName);
}

}  // namespace varno_zpk
