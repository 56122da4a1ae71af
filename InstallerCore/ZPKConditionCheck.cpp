// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "InstallerCore/ZPKConditionCheck.h"

#include <algorithm>
#include <optional>

#include "Base/ZPKPath.h"
#include "Description/CConditionsType.h"
#include "Description/CDiscType.h"
#include "Description/CTargetItemsType.h"
#include "Description/CUIMLogType.h"
#include "Description/CUninstallXMLType.h"
#include "Description/CUpdateInfoType.h"
#include "Description/CZPKXMLLoader.h"
#include "Package/CZPKUtil.h"
#include "Package/ZPKStagedItem.h"
#include "Platform/ZPKPropertyList.h"
#include "Platform/ZPKStandardFolders.h"

using namespace varno_zpk;

namespace {

constexpr const char* kSoftwareList = "Preferences/com.varno.ic_installer.plist";
constexpr const char* kSoftwareListKey = "Varno Utilities";
constexpr const char* kUninstallFolder = "Varno_Inc_IC/Tandemset/Uninstall";

/// Any one product suffices. Other kinds of entries are not consulted.
bool isAnyProductInstalled(const CConditionsType& conditions) {
    return std::any_of(
               conditions.uimLogs.begin(), conditions.uimLogs.end(),
               [](const auto& log) { return ZPKConditionCheck::isSignatureInstalled(log->signature); }) ||
           std::any_of(conditions.uninstallXmls.begin(), conditions.uninstallXmls.end(),
                       [](const auto& uninstall) {
                           return ZPKConditionCheck::isUninstallDescriptionThere(uninstall->appName);
                       });
}

ZPKConditionAnswer answerOf(const CUpdateInfoType& info) {
    ZPKConditionAnswer answer;
    if (info.conditions != nullptr) {
        if (isAnyProductInstalled(*info.conditions)) {
            answer.isMet = true;
            return answer;
        }
        for (const auto& disc : info.conditions->discs) {
            answer.discPaths.push_back(disc->filePath);
        }
    }
    if (info.targetItems != nullptr) {
        answer.products = info.targetItems->GetDisplayNameList();
    }
    return answer;
}

}  // namespace

ZPKConditionAnswer ZPKConditionCheck::check(const std::string& path, const std::string& stagingFolder) {
    ZPKConditionAnswer answer;
    const ZPKStagedItem item(path, stagingFolder);
    switch (item.standing()) {
        case ZPKStagedItem::Standing::Absent:
            answer.isMet = true;
            return answer;
        case ZPKStagedItem::Standing::Unusable:
            return answer;
        case ZPKStagedItem::Standing::Inside:
            break;
    }
    // Kept until the process ends.
    const CUpdateInfoType* const info = CZPKXMLLoader::LoadConditionXML(item.target());
    return info == nullptr ? answer : answerOf(*info);
}

bool ZPKConditionCheck::isSignatureInstalled(const std::string& signature) {
    const std::optional<std::string> library = ZPKStandardFolders::localLibraryFolder();
    if (!library) {
        return false;
    }
    const auto list = ZPKPropertyList::dictionaryWithContentsOfFile(ZPKPath::join(*library, kSoftwareList));
    if (!list) {
        return false;
    }
    const auto signatures = list->stringArrayForKey(kSoftwareListKey);
    return signatures && std::find(signatures->begin(), signatures->end(), signature) != signatures->end();
}

bool ZPKConditionCheck::isUninstallDescriptionThere(const std::string& name) {
    const std::optional<std::string> support = ZPKStandardFolders::localApplicationSupportFolder();
    return support && CZPKUtil::IsFileExist(ZPKPath::join(ZPKPath::join(*support, kUninstallFolder), name));
}
