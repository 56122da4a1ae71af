// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Description/CUpdateInfoType.h"

#include "Description/CElementReader.h"
#include "Description/ZPKXMLDefine.h"

namespace varno_zpk {

CUpdateInfoType::CUpdateInfoType(CXMLElement* element) {
    CreateAttribute(element);
    CreateChildren(element);
}

CUpdateInfoType::~CUpdateInfoType() {
    targetItems.reset();
    conditions.reset();
}

void CUpdateInfoType::CreateAttribute(CXMLElement* element) {
    CElementReader::ReadAttribute(CElementReader::Require(element), ATTR_XMLVERSION, xmlVersion);
}

void CUpdateInfoType::CreateChildren(CXMLElement* element) {
    CElementReader::ForEachChildElement(CElementReader::Require(element), [this](CXMLElement* child) {
        if (child->GetNameString() == TAG_CONDITIONS) {
            conditions = std::make_unique<CConditionsType>(child);
        } else if (child->GetNameString() == TAG_TARGETITEMS) {
            targetItems = std::make_unique<CTargetItemsType>(child);
        }
    });
}

}  // namespace varno_zpk
