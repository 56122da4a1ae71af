// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "Tools/zpkpack/PackageDescription.h"

namespace zpk_packager {

/// The `Info.plist` of a bundle.
class InfoPlist {
public:
    InfoPlist() = delete;

    /// Replaces the file at `path` as a whole. Throws `PackagerFailure` with the cause.
    static void write(const PackageDescription& description, const std::string& path);
};

}  // namespace zpk_packager
