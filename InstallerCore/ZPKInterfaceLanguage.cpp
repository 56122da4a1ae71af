// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "InstallerCore/ZPKInterfaceLanguage.h"

#include <memory>

#include "Base/ZPKPath.h"
#include "Common/CResourceBundle.h"
#include "Description/CLanguagesType.h"
#include "Description/CZPKXMLLoader.h"
#include "InstallerCore/ZPKLanguageInfos.h"
#include "Package/CZPKUtil.h"
#include "Package/ZPKPackageLayout.h"

using namespace varno_zpk;

std::string ZPKInterfaceLanguage::setUp(const std::string& resourceFolder,
                                        const ZPKLanguageInfos& preferred) {
    const std::string languageFolder = ZPKPackageLayout::languageFolder(resourceFolder);
    CResourceBundle::AddDefaultBundlePath(languageFolder.c_str());
    if (preferred.languageCount() != 0) {
        CResourceBundle::SetCurrentLanguage(preferred.languageAt(0).c_str());
    }
    const std::unique_ptr<const CLanguagesType> languages =
        CZPKXMLLoader::LoadLanguagesXML(ZPKPackageLayout::languageList(resourceFolder));
    if (languages) {
        CResourceBundle::SetAlternativeLanguage(languages->fallBackCode.c_str());
    }
    const std::string current = CResourceBundle::GetCurrentLanguage();
    // The texts of a language without a folder come from the alternative one.
    const bool hasFolder = CZPKUtil::IsFolderExist(ZPKPath::join(languageFolder, current));
    return hasFolder ? current : CResourceBundle::GetAlternativeLanguage();
}
