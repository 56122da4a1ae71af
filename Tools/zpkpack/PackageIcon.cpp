// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/PackageIcon.h"

#include <cerrno>
#include <optional>

#include "Base/ZPKRegularFile.h"
#include "Package/ZPKPackageLayout.h"
#include "Platform/ZPKFileManager.h"
#include "Tools/zpkpack/Check/PNGPicture.h"
#include "Tools/zpkpack/Check/SourceText.h"
#include "Tools/zpkpack/PackagerFailure.h"
#include "Tools/zpkpack/SourceWriter.h"

namespace zpk_packager {

namespace {

constexpr unsigned int kMode = 0644;

}  // namespace

void PackageIcon::putInto(const std::string& resourceFolder) const {
    const std::string picture = ZPKPackageLayout::icon(m_source);
    if (!ZPKFileManager::fileExists(picture)) {
        return;
    }
    const std::optional<std::string> bytes = ZPKRegularFile::contents(picture, SourceText::kLargestFile);
    if (!bytes) {
        throw PackagerFailure::ofSystem(picture, errno);
    }
    const ZPKResult<PNGPicture> read = PNGPicture::read(*bytes, picture);
    if (!read) {
        throw PackagerFailure(read.failure());
    }
    const std::string copy = ZPKPackageLayout::icon(resourceFolder);
    // The template may hold something of the name.
    ZPKFileManager::removeItem(copy).ignore();
    SourceWriter::writeFile(copy, *bytes, kMode);
}

}  // namespace zpk_packager
