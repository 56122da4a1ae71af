// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Description/CDiscType.h"

#include "Description/CElementReader.h"
#include "Description/ZPKXMLDefine.h"

namespace varno_zpk {

CDiscType::CDiscType(CXMLElement* element) {
    CreateAttribute(element);
}

void CDiscType::CreateAttribute(CXMLElement* element) {
    CElementReader::ReadAttribute(CElementReader::Require(element), ATTR_FILEPATH, filePath);
}

}  // namespace varno_zpk
