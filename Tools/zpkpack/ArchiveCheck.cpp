// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/ArchiveCheck.h"

#include "Archive/Archive.h"
#include "Base/ZPKPath.h"
#include "Platform/ZPKFileManager.h"
#include "Tools/zpkpack/Check/NameHashes.h"
#include "Tools/zpkpack/FirstErrorSink.h"
#include "Tools/zpkpack/PackagerFailure.h"

namespace zpk_packager {

namespace {

void addMembers(const std::string& archivePath, const std::string& sourceFolder, NameHashes& members) {
    FirstErrorSink sink;
    const bool whole = zpk_archive::list(
        archivePath,
        [&](const zpk_archive::MemberDescription& member) { members.add(NameHashes::hashOf(member.name)); },
        sink);
    if (!whole) {
        throw PackagerFailure("the archive of " + sourceFolder + " cannot be read back: " + sink.text());
    }
    members.sort();
}

void checkMember(const NameHashes& members, const std::string& member, const std::string& sourceFolder) {
    if (members.lacks(NameHashes::hashOf(member))) {
        throw PackagerFailure("the archive of " + sourceFolder + " lacks " + member);
    }
}

}  // namespace

void ArchiveCheck::run(const std::string& archivePath, const std::string& sourceFolder,
                       const std::string& name) {
    NameHashes members;
    do {
        addMembers(archivePath, sourceFolder, members);
        checkMember(members, ZPKPath::join(name, ""), sourceFolder);
        require(
            ZPKFileManager::visitFolder(sourceFolder, [&](const std::string& path, ZPKFileManager::ItemKind) {
                checkMember(members, ZPKPath::join(name, path), sourceFolder);
            }));
    } while (members.nextPart());
}

}  // namespace zpk_packager
