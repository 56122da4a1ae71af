// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "Base/ZPKFailure.h"

namespace zpk_packager {

/// What the outside of a PNG picture says of it; its points are not looked at.
struct PNGPicture {
    /// In points; never 0.
    std::uint32_t width = 0;
    std::uint32_t height = 0;

    /// The picture in `bytes`; a failure of `path` when they are no PNG file, or one that is damaged or cut
    /// short by the sums of its parts.
    static ZPKResult<PNGPicture> read(std::string_view bytes, const std::string& path);
};

}  // namespace zpk_packager
