// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/Check/SourceCheck.h"

#include "Package/ZPKPackageLayout.h"
#include "Platform/ZPKFileManager.h"
#include "Tools/zpkpack/Check/ConditionCheck.h"
#include "Tools/zpkpack/Check/IconCheck.h"
#include "Tools/zpkpack/Check/LanguageNamesCheck.h"
#include "Tools/zpkpack/Check/LanguagesCheck.h"
#include "Tools/zpkpack/Check/PackageStringsCheck.h"
#include "Tools/zpkpack/Check/PayloadCheck.h"
#include "Tools/zpkpack/Check/StartupCheck.h"
#include "Tools/zpkpack/Check/TablesCheck.h"

namespace zpk_packager {

void SourceCheck::run(const std::string& folder) {
    if (hasFolder(folder, "the package source")) {
        PackageStringsCheck(m_findings).run(folder);
        IconCheck(m_findings).run(folder);
        const std::string info = ZPKPackageLayout::folder(folder, ZPKPackageLayout::Content::Info);
        if (hasFolder(info, "it holds Startup.xml")) {
            PayloadCheck(m_findings).run(info);
        }
        const std::string data = ZPKPackageLayout::folder(folder, ZPKPackageLayout::Content::Data);
        if (hasFolder(data, "it holds the setup program and its files")) {
            PayloadCheck(m_findings).run(data);
        }
        StartupCheck(m_findings).run(folder);
        ConditionCheck(m_findings).run(folder);
        const std::string languages = ZPKPackageLayout::languageFolder(folder);
        if (ZPKFileManager::isFolder(languages)) {
            LanguagesCheck(languages, m_findings).run();
            TablesCheck(languages, m_findings).run();
            LanguageNamesCheck(folder, m_findings).run();
        }
    }
    m_findings.finish();
}

bool SourceCheck::hasFolder(const std::string& path, const std::string& purpose) {
    if (!ZPKFileManager::isFolder(path)) {
        m_findings.add("missing-part", path, "there is no such folder: " + purpose);
        return false;
    }
    return true;
}

}  // namespace zpk_packager
