// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/ArchivePacker.h"

#include <sys/stat.h>

#include <cerrno>

#include "Base/ZPKPath.h"
#include "Package/ZPKScrambler.h"
#include "Platform/ZPKFileManager.h"
#include "Tools/zpkpack/ArchiveCheck.h"
#include "Tools/zpkpack/FirstErrorSink.h"
#include "Tools/zpkpack/PackagerFailure.h"
#include "Tools/zpkpack/TreeSize.h"

namespace zpk_packager {

namespace {

constexpr mode_t kArchiveMode = 0644;

}  // namespace

void ArchivePacker::makeArchive(const std::string& source, const std::string& archive) const {
    FirstErrorSink sink;
    if (!zpk_archive::create(source, archive, sink, m_time,
                             begin("packing " + ZPKPath::lastComponent(source), source))) {
        throw PackagerFailure("cannot pack " + source + ": " + sink.text());
    }
}

/// Nothing where nobody looks.
zpk_archive::ByteCounter ArchivePacker::begin(const std::string& what, const std::string& path) const {
    if (m_progress == nullptr || !m_progress->isShown()) {
        return {};
    }
    m_progress->begin(what, TreeSize::of(path));
    return m_progress->counter();
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
    const std::string name = ZPKPackageLayout::name(content);
    ArchiveCheck::run(readBack, source, name, begin("reading back " + name, readBack));
    require(ZPKFileManager::removeItem(readBack));
}

}  // namespace zpk_packager
