// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Description/CUIMLogType.h"

#include "Description/CElementReader.h"
#include "Description/ZPKXMLDefine.h"

namespace varno_zpk {

CUIMLogType::CUIMLogType(CXMLElement* element) {
    CreateAttribute(element);
}

void CUIMLogType::CreateAttribute(CXMLElement* element) {
    CElementReader::ReadAttribute(CElementReader::Require(element), ATTR_SIGNATURE, signature);
}

}  // namespace varno_zpk
