// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/ArchiveCheck.h"

#include <sys/types.h>

#include <cerrno>

#include "Archive/Archive.h"
#include "Base/ZPKDescriptorIO.h"
#include "Base/ZPKPath.h"
#include "Platform/ZPKFileHandle.h"
#include "Platform/ZPKFileManager.h"
#include "Tools/zpkpack/Check/NameHashes.h"
#include "Tools/zpkpack/FirstErrorSink.h"
#include "Tools/zpkpack/PackagerFailure.h"

namespace zpk_packager {

namespace {

zpk_archive::ByteSource sourceOf(const ZPKFileHandle& archive, const zpk_archive::ByteCounter& counted) {
    return [&](std::uint8_t* bytes, std::size_t count) {
        const ssize_t got = ZPKDescriptorIO::readSome(archive.descriptor(), bytes, count);
        if (got < 0) {
            throw PackagerFailure(ZPKFailure::systemReason(errno));
        }
        if (counted) {
            counted(static_cast<std::uint64_t>(got));
        }
        return static_cast<std::size_t>(got);
    };
}

void addMembers(const std::string& archivePath, const std::string& sourceFolder, NameHashes& members,
                const zpk_archive::ByteCounter& counted) {
    FirstErrorSink sink;
    const ZPKResult<ZPKFileHandle> archive = ZPKFileHandle::forReadingAtPath(archivePath);
    if (!archive) {
        throw PackagerFailure("the archive of " + sourceFolder +
                              " cannot be read back: " + archive.failure().message());
    }
    const bool whole = zpk_archive::list(
        archivePath, sourceOf(*archive, counted),
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
                       const std::string& name, const zpk_archive::ByteCounter& counted) {
    NameHashes members;
    // Only the first of several readings counts: the others are as good as none beside it.
    zpk_archive::ByteCounter counter = counted;
    do {
        addMembers(archivePath, sourceFolder, members, counter);
        counter = nullptr;
        checkMember(members, ZPKPath::join(name, ""), sourceFolder);
        require(
            ZPKFileManager::visitFolder(sourceFolder, [&](const std::string& path, ZPKFileManager::ItemKind) {
                checkMember(members, ZPKPath::join(name, path), sourceFolder);
            }));
    } while (members.nextPart());
}

}  // namespace zpk_packager
