// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/ArchivePacker.h"

#include <sys/stat.h>

#include <cerrno>

#include "Archive/Archive.h"
#include "Package/ZPKScrambler.h"
#include "Platform/ZPKFileManager.h"
#include "Tools/zpkpack/ArchiveCheck.h"
#include "Tools/zpkpack/FirstErrorSink.h"
#include "Tools/zpkpack/PackagerFailure.h"

namespace zpk_packager {

namespace {

constexpr mode_t kArchiveMode = 0644;

}  // namespace

void ArchivePacker::makeArchive(const std::string& source, const std::string& archive) const {
    FirstErrorSink sink;
    if (!zpk_archive::create(source, archive, sink, m_time)) {
        throw PackagerFailure("cannot pack " + source + ": " + sink.text());
    }
}

void ArchivePacker::pack(ZPKPackageLayout::Content content, const std::string& sourceFolder,
                         const std::string& resourceFolder) const {
    const std::string source = ZPKPackageLayout::folder(sourceFolder, content);
    const std::string plain = ZPKPackageLayout::plainArchive(m_workFolder, content);
    const std::string scrambled = ZPKPackageLayout::scrambledArchive(resourceFolder, content);
    const std::string readBack = plain + ".check";
    makeArchive(source, plain);
    // The template may hold something of the name.
    ZPKFileManager::removeItem(scrambled).ignore();
    require(ZPKScrambler::scramble(plain, scrambled));
    // The same for everybody, whatever their mask.
    if (::chmod(scrambled.c_str(), kArchiveMode) != 0) {
        throw PackagerFailure::ofSystem(scrambled, errno);
    }
    require(ZPKFileManager::removeItem(plain));
    require(ZPKScrambler::unscramble(scrambled, readBack));
    ArchiveCheck::run(readBack, source, ZPKPackageLayout::name(content));
    require(ZPKFileManager::removeItem(readBack));
}

}  // namespace zpk_packager
