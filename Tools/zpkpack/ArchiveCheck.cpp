// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/ArchiveCheck.h"

#include <set>
#include <vector>

#include "Archive/Archive.h"
#include "Base/ZPKPath.h"
#include "Platform/ZPKFileManager.h"
#include "Tools/zpkpack/FirstErrorSink.h"
#include "Tools/zpkpack/PackagerFailure.h"

namespace zpk_packager {

namespace {

std::set<std::string> memberNames(const std::string& archivePath, const std::string& sourceFolder) {
    std::set<std::string> members;
    FirstErrorSink sink;
    const bool whole = zpk_archive::list(
        archivePath,
        [&members](const zpk_archive::MemberDescription& member) { members.insert(member.name); }, sink);
    if (!whole) {
        throw PackagerFailure("the archive of " + sourceFolder + " cannot be read back: " + sink.text());
    }
    return members;
}

}  // namespace

void ArchiveCheck::run(const std::string& archivePath, const std::string& sourceFolder,
                       const std::string& name) {
    const std::set<std::string> members = memberNames(archivePath, sourceFolder);
    std::vector<std::string> paths{""};
    std::vector<std::string> below;
    require(ZPKFileManager::subpathsOfFolder(sourceFolder, below));
    paths.insert(paths.end(), below.begin(), below.end());
    for (const std::string& path : paths) {
        const std::string member = ZPKPath::join(name, path);
        if (members.count(member) == 0) {
            throw PackagerFailure("the archive of " + sourceFolder + " lacks " + member);
        }
    }
}

}  // namespace zpk_packager
