// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/CarriedWindows.h"

#include <utility>

#include "Base/ZPKPath.h"
#include "Package/ZPKCarriedParts.h"
#include "Platform/ZPKFileManager.h"
#include "Tools/zpkpack/PackagerFailure.h"

namespace zpk_packager {

namespace {

const std::string kParts = "Contents/Frameworks";
const std::string kModules = "Contents/PlugIns";
const std::string kResources = "Contents/Resources";
const std::string kLicenses = "Contents/Resources/Licenses/Windows";
constexpr const char* kOwnLicenses = "Licenses";
constexpr const char* kFormExtension = "ui";

/// On another machine a part that is a link to elsewhere would be missing, or not the one that was tried.
void checkInside(const std::string& part, const std::string& folder) {
    if (!ZPKPath::isSameOrInside(ZPKPath::resolved(part), ZPKPath::resolved(folder))) {
        throw PackagerFailure(part, "leads out of " + folder);
    }
}

void checkParts(const std::string& folder) {
    const ZPKCarriedParts parts(folder);
    require(parts.find());
    for (const std::string& program : {parts.loader(), parts.program()}) {
        checkInside(program, folder);
    }
    const ZPKResult<std::vector<std::string>> listed = parts.listed();
    if (!listed) {
        throw PackagerFailure(listed.failure());
    }
    for (const std::string& part : *listed) {
        checkInside(part, folder);
    }
}

}  // namespace

CarriedWindows::CarriedWindows(std::string templatePath, const std::optional<std::string>& frameworks,
                               bool isWanted)
    : m_template(std::move(templatePath)), m_isWanted(isWanted) {
    if (frameworks) {
        m_frameworks = ZPKPath::withoutTrailingSeparators(*frameworks);
    }
}

void CarriedWindows::check() const {
    if (!m_isWanted) {
        return;
    }
    // A build that shares the machine's libraries has a template without parts.
    const std::string ofTemplate = ZPKPath::join(m_template, kParts);
    if (m_frameworks) {
        checkParts(*m_frameworks);
    } else if (ZPKFileManager::fileExists(ofTemplate)) {
        checkParts(ofTemplate);
    }
}

std::vector<std::string> CarriedWindows::leftOut() const {
    if (m_isWanted && !m_frameworks) {
        return {};
    }
    std::vector<std::string> paths{kParts};
    if (!m_isWanted || hasOwnLicenses()) {
        paths.push_back(kLicenses);
    }
    if (!m_isWanted) {
        paths.push_back(kModules);
        std::vector<std::string> names;
        require(ZPKFileManager::contentsOfFolder(ZPKPath::join(m_template, kResources), names));
        for (const std::string& name : names) {
            if (ZPKPath::extension(name) == kFormExtension) {
                paths.push_back(ZPKPath::join(kResources, name));
            }
        }
    }
    return paths;
}

void CarriedWindows::putInto(const std::string& bundle) const {
    if (!m_frameworks) {
        return;
    }
    const std::string parts = ZPKPath::join(bundle, kParts);
    require(ZPKFileManager::copyItem(ZPKPath::resolved(*m_frameworks), parts));
    if (hasOwnLicenses()) {
        const std::string licenses = ZPKPath::join(bundle, kLicenses);
        require(ZPKFileManager::createFolderWithIntermediateFolders(ZPKPath::parent(licenses), 0755));
        require(ZPKFileManager::copyItem(ZPKPath::join(parts, kOwnLicenses), licenses));
        require(ZPKFileManager::removeItem(ZPKPath::join(parts, kOwnLicenses)));
    }
    checkParts(parts);
}

bool CarriedWindows::hasOwnLicenses() const {
    return m_frameworks && ZPKFileManager::isFolder(ZPKPath::join(*m_frameworks, kOwnLicenses));
}

}  // namespace zpk_packager
