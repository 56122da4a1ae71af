// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>
#include <string>

namespace zpk_packager {

/// What a package has in it, for the vendor. Sizes in bytes, of the files alone. A value.
struct PackageSummary {
    struct Files {
        std::uint64_t count = 0;
        std::uint64_t size = 0;
    };

    /// Counts in a bundle. Throws `PackagerFailure`.
    static PackageSummary ofBundle(const std::string& path);

    /// Throws `PackagerFailure`.
    static std::uint64_t sizeOfFile(const std::string& path);

    /// A few lines.
    std::string text() const;

    Files whole;
    /// What is carried for the windows, and the libraries among it.
    Files parts;
    std::uint64_t libraries = 0;
    /// Whether the bundle has windows, with parts of its own or the machine's.
    bool hasWindows = false;
    /// Of the one file, where the package is one.
    std::uint64_t runFileSize = 0;
};

}  // namespace zpk_packager
