// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/PackageSource.h"

#include <memory>

#include "Description/CZPKXMLLoader.h"
#include "Package/ZPKPackageLayout.h"
#include "Platform/ZPKFileManager.h"
#include "Tools/zpkpack/PackagerFailure.h"

using namespace varno_zpk;

namespace zpk_packager {

void PackageSource::check() const {
    requireFolder(m_folder, "the package source");
    requireFolder(ZPKPackageLayout::folder(m_folder, ZPKPackageLayout::Content::Info),
                  "it holds Startup.xml");
    requireFolder(ZPKPackageLayout::folder(m_folder, ZPKPackageLayout::Content::Data),
                  "it holds the setup program and its files");
    checkDescriptions();
}

bool PackageSource::hasLanguages() const {
    return ZPKFileManager::isFolder(languageFolder());
}

std::string PackageSource::languageFolder() const {
    return ZPKPackageLayout::languageFolder(m_folder);
}

void PackageSource::requireFolder(const std::string& path, const std::string& purpose) const {
    if (!ZPKFileManager::isFolder(path)) {
        throw PackagerFailure("there is no folder " + path + ": " + purpose);
    }
}

void PackageSource::checkDescriptions() const {
    const std::string startup = ZPKPackageLayout::startupDescription(m_folder);
    if (ZPKFileManager::fileExists(startup) &&
        !std::unique_ptr<CStartupType>(CZPKXMLLoader::LoadStartupXML(startup))) {
        throw PackagerFailure(startup + " cannot be loaded: it is not well-formed XML");
    }
    const std::string condition = ZPKPackageLayout::conditionDescription(m_folder);
    if (ZPKFileManager::fileExists(condition) &&
        !std::unique_ptr<CUpdateInfoType>(CZPKXMLLoader::LoadConditionXML(condition))) {
        throw PackagerFailure(condition + " cannot be loaded: it is not well-formed XML");
    }
    const std::string languages = ZPKPackageLayout::languageList(m_folder);
    if (hasLanguages() && !CZPKXMLLoader::LoadLanguagesXML(languages)) {
        throw PackagerFailure(languages +
                              " cannot be loaded: it needs a root with FallBackCode and one "
                              "Language element with a Code for each language");
    }
}

}  // namespace zpk_packager
