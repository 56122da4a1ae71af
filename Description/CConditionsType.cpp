// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Description/CConditionsType.h"

#include <string>

#include "Description/CElementReader.h"
#include "Description/ZPKXMLDefine.h"

namespace varno_zpk {

namespace {

template <typename Entry>
void deleteEntries(std::vector<std::unique_ptr<Entry>>& entries) {
    for (std::unique_ptr<Entry>& entry : entries) {
        entry.reset();
    }
    entries.clear();
}

}  // namespace

CConditionsType::CConditionsType(CXMLElement* element) {
    CreateChildren(element);
}

CConditionsType::~CConditionsType() {
    deleteEntries(registries);
    deleteEntries(uimLogs);
    deleteEntries(uninstallXmls);
    deleteEntries(discs);
}

void CConditionsType::CreateChildren(CXMLElement* element) {
    CElementReader::ForEachChildElement(CElementReader::Require(element),
                                        [this](CXMLElement* child) { CreateChild(child); });
}

void CConditionsType::CreateChild(CXMLElement* child) {
    const std::string& name = child->GetNameString();
    if (name == TAG_REGISTRY) {
        registries.push_back(std::make_unique<CRegistryType>(child));
    } else if (name == TAG_UIMLOG) {
        uimLogs.push_back(std::make_unique<CUIMLogType>(child));
    } else if (name == TAG_UNINSTALLXML) {
        uninstallXmls.push_back(std::make_unique<CUninstallXMLType>(child));
    } else if (name == TAG_DISC) {
        discs.push_back(std::make_unique<CDiscType>(child));
    }
}

}  // namespace varno_zpk
