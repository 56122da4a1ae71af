// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

namespace zpk_packager {

/// What a vendor says about a package in `Package.strings`, a text property list at the top of the
/// package source:
///
///     "CFBundleName" = "HelloSetup";
///     "CFBundleIdentifier" = "com.example.HelloSetup";
///     "CFBundleDisplayName" = "Hello, the Suite";
struct PackageDescription {
    std::string bundleName;
    std::string bundleIdentifier;

    /// `CFBundleDisplayName`, what people read in the place of the name; empty where there is none.
    std::string displayName{};

    /// What people read.
    const std::string& title() const { return displayName.empty() ? bundleName : displayName; }

    /// Reads and checks the description of the package source in `folder`. Throws
    /// `PackagerFailure` when it is missing, incomplete, or when the identifier's last part is not the name:
    /// a launcher finds other runs of itself by either.
    static PackageDescription read(const std::string& folder);
};

}  // namespace zpk_packager
