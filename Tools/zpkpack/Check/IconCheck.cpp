// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/Check/IconCheck.h"

#include <algorithm>
#include <optional>

#include "Package/ZPKPackageLayout.h"
#include "Tools/zpkpack/Check/CheckedFile.h"
#include "Tools/zpkpack/Check/DrawingCheck.h"
#include "Tools/zpkpack/Check/PNGPicture.h"

namespace zpk_packager {

namespace {

constexpr std::uint32_t kSmallestSide = 48;
constexpr std::uint32_t kLargestSide = 512;

std::string sizeOf(const PNGPicture& picture) {
    return std::to_string(picture.width) + " by " + std::to_string(picture.height) + " points";
}

}  // namespace

void IconCheck::run(const std::string& folder) {
    const std::string path = ZPKPackageLayout::icon(folder);
    const std::string drawing = ZPKPackageLayout::drawing(folder);
    if (CheckedFile::isThere(path)) {
        if (CheckedFile::isThere(drawing)) {
            m_findings.add("icon-twice", drawing, "it is not shown: Icon.png is beside it");
        }
        if (const std::optional<std::string> bytes = CheckedFile::read(path, m_findings)) {
            checkPicture(path, *bytes);
        }
    } else if (const std::optional<std::string> bytes = CheckedFile::read(drawing, m_findings)) {
        DrawingCheck(drawing, m_findings).run(*bytes);
    }
}

void IconCheck::checkPicture(const std::string& path, const std::string& bytes) {
    const ZPKResult<PNGPicture> picture = PNGPicture::read(bytes, path);
    if (!picture) {
        m_findings.add("icon", path, picture.failure().reason());
        return;
    }
    const auto [smaller, larger] = std::minmax(picture->width, picture->height);
    if (smaller != larger) {
        m_findings.add("icon-shape", path, "it is " + sizeOf(*picture));
    }
    if (larger > kLargestSide) {
        m_findings.add("icon-too-large", path, "it is " + sizeOf(*picture));
    } else if (larger < kSmallestSide) {
        m_findings.add("icon-small", path, "it is " + sizeOf(*picture));
    }
}

}  // namespace zpk_packager
