// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Description/CTargetItemsType.h"

#include <memory>

#include "Description/CElementReader.h"
#include "Description/ZPKXMLDefine.h"

namespace varno_zpk {

CTargetItemsType::CTargetItemsType(CXMLElement* element) {
    CreateChildren(element);
}

std::vector<std::string> CTargetItemsType::GetDisplayNameList() const {
    std::vector<std::string> names;
    names.reserve(items.size());
    for (const CItemInfoType* item : items) {
        names.push_back(item->displayName);
    }
    return names;
}

void CTargetItemsType::CreateChildren(CXMLElement* element) {
    CElementReader::ForEachChildElement(CElementReader::Require(element), [this](CXMLElement* child) {
        if (child->GetNameString() == TAG_ITEMINFO) {
            auto item = std::make_unique<CItemInfoType>(child);
            items.push_back(item.get());
            static_cast<void>(item.release());
        }
    });
}

}  // namespace varno_zpk
