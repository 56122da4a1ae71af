// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/ArchivePacker.h"

#include <sys/stat.h>

#include <cerrno>

#include "Archive/Archive.h"
#include "Package/CZPKUtil.h"
#include "Platform/ZPKFileManager.h"
#include "Tools/zpkpack/ArchiveCheck.h"
#include "Tools/zpkpack/FirstErrorSink.h"
#include "Tools/zpkpack/PackagerFailure.h"

using varno_zpk::CZPKUtil;

namespace zpk_packager {

namespace {

void makeArchive(const std::string& source, const std::string& archive) {
    FirstErrorSink sink;
    if (!zpk_archive::create(source, archive, sink)) {
        throw PackagerFailure("cannot pack " + source + ": " + sink.text());
    }
}

off_t sizeOf(const std::string& path) {
    struct stat attributes;
    if (::stat(path.c_str(), &attributes) != 0) {
        throw PackagerFailure::ofSystem(path, errno);
    }
    return attributes.st_size;
}

/// Scrambling itself is silent; what it wrote tells.
void requireSameSize(const std::string& made, const std::string& original) {
    if (sizeOf(made) != sizeOf(original)) {
        throw PackagerFailure(made, "it could not be written whole");
    }
}

}  // namespace

void ArchivePacker::pack(ZPKPackageLayout::Content content, const std::string& sourceFolder,
                         const std::string& resourceFolder) const {
    const std::string source = ZPKPackageLayout::folder(sourceFolder, content);
    const std::string plain = ZPKPackageLayout::plainArchive(m_workFolder, content);
    const std::string scrambled = ZPKPackageLayout::scrambledArchive(resourceFolder, content);
    const std::string readBack = plain + ".check";
    makeArchive(source, plain);
    CZPKUtil::Fake(plain, scrambled);
    requireSameSize(scrambled, plain);
    ZPKFileManager::removeItem(plain).ignore();
    CZPKUtil::Unfake(scrambled, readBack);
    requireSameSize(readBack, scrambled);
    ArchiveCheck::run(readBack, source, ZPKPackageLayout::name(content));
    ZPKFileManager::removeItem(readBack).ignore();
}

}  // namespace zpk_packager
