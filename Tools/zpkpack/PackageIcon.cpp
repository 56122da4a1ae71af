// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/PackageIcon.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <optional>

#include "Base/ZPKPath.h"
#include "Base/ZPKRegularFile.h"
#include "Package/ZPKPackageLayout.h"
#include "Platform/ZPKFileManager.h"
#include "Platform/ZPKTask.h"
#include "Tools/zpkpack/Check/PNGPicture.h"
#include "Tools/zpkpack/Check/SourceText.h"
#include "Tools/zpkpack/PackagerFailure.h"
#include "Tools/zpkpack/SourceWriter.h"
#include "Tools/zpkpack/TemplateProgram.h"

namespace zpk_packager {

namespace {

constexpr unsigned int kMode = 0644;

/// In points. Launchers make it smaller where that is wanted.
constexpr const char* kSide = "256";

PackagerFailure cannotDraw(const std::string& drawing, const std::string& reason) {
    return {drawing, "no picture can be made of it" + reason + "; put a picture, Icon.png, beside it"};
}

}  // namespace

bool PackageIcon::hasPicture() const {
    return ZPKFileManager::fileExists(ZPKPackageLayout::icon(m_source));
}

bool PackageIcon::hasDrawing() const {
    return ZPKFileManager::fileExists(ZPKPackageLayout::drawing(m_source));
}

void PackageIcon::check() const {
    if (!hasPicture() && hasDrawing() && !ZPKFileManager::fileExists(m_drawProgram)) {
        throw cannotDraw(ZPKPackageLayout::drawing(m_source),
                         ": zpkpack lacks its program " + ZPKPath::lastComponent(m_drawProgram));
    }
}

void PackageIcon::putInto(const std::string& resourceFolder) const {
    const std::string copy = ZPKPackageLayout::icon(resourceFolder);
    if (hasPicture()) {
        const std::string picture = pictureInSource();
        // The template may hold something of the name.
        ZPKFileManager::removeItem(copy).ignore();
        SourceWriter::writeFile(copy, picture, kMode);
    } else if (hasDrawing()) {
        ZPKFileManager::removeItem(copy).ignore();
        draw(copy);
    }
}

std::string PackageIcon::pictureInSource() const {
    const std::string path = ZPKPackageLayout::icon(m_source);
    std::optional<std::string> bytes = ZPKRegularFile::contents(path, SourceText::kLargestFile);
    if (!bytes) {
        throw PackagerFailure::ofSystem(path, errno);
    }
    const ZPKResult<PNGPicture> read = PNGPicture::read(*bytes, path);
    if (!read) {
        throw PackagerFailure(read.failure());
    }
    return std::move(*bytes);
}

void PackageIcon::draw(const std::string& picture) const {
    const std::string drawing = ZPKPackageLayout::drawing(m_source);
    ZPKTask task;
    TemplateProgram::run(task, m_drawProgram, {drawing, kSide, picture});
    if (task.terminationSignal() == SIGXCPU) {
        throw cannotDraw(drawing, ", since drawing it takes too long");
    }
    if (task.terminationSignal() != 0) {
        throw cannotDraw(drawing, std::string(": ") + ::strsignal(task.terminationSignal()));
    }
    if (task.terminationStatus() != 0) {
        throw cannotDraw(drawing, "");
    }
}

}  // namespace zpk_packager
