// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>
#include <string>

namespace zpk_packager {

/// How much there is to read.
class TreeSize {
public:
    TreeSize() = delete;

    /// Bytes of the file at `path`, or of all files in a folder, links not followed; what cannot be looked at
    /// does not count.
    static std::uint64_t of(const std::string& path);
};

}  // namespace zpk_packager
