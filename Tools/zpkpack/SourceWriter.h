// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "Tools/zpkpack/PackageDescription.h"

namespace zpk_packager {

/// Writes the files of a package source. Operations throw `PackagerFailure`.
class SourceWriter {
public:
    SourceWriter() = delete;

    /// Makes the folder `path`, whose own folder is there.
    static void makeFolder(const std::string& path);

    /// Makes the file `path`, which is not there yet, with exactly these permissions.
    static void writeFile(const std::string& path, const std::string& contents, unsigned int mode);

    /// `Package.strings` with these names.
    static std::string packageStrings(const PackageDescription& description);
};

}  // namespace zpk_packager
