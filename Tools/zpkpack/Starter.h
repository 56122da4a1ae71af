// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "Tools/zpkpack/PackageDescription.h"

namespace zpk_packager {

/// The desktop entry at the top of a bundle, by which people open the package in a file manager: none of them
/// starts a program for a folder. It finds the launcher beside itself, wherever the bundle lies.
class Starter {
public:
    Starter() = delete;

    /// Its path in the bundle.
    static std::string path(const std::string& bundleName) { return bundleName + ".desktop"; }

    /// Writes that of the bundle, with the names that its languages give it. The description and the
    /// languages are in the bundle by then. Throws `PackagerFailure`.
    static void write(const PackageDescription& description, const std::string& bundle);
};

}  // namespace zpk_packager
