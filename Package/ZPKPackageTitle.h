// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <optional>
#include <string>

#include "Platform/ZPKBundle.h"

/// What a package is called where people read it. Main thread only.
class ZPKPackageTitle {
public:
    ZPKPackageTitle() = delete;

    /// The name that the package gives itself in that language: `CFBundleDisplayName` of the language's own
    /// names, else of the bundle's description. Nothing where the package has none.
    static std::optional<std::string> find(const ZPKBundle& bundle, const std::string& language);

    /// The same, or else the bundle's name, which every package has.
    static std::string inLanguage(const ZPKBundle& bundle, const std::string& language);
};
