// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace zpk_packager {

/// What `zpkpack build` is told.
struct BuildOptions {
    /// The package source: `Package.strings`, `Info/`, `Data/` and, where the package brings its own
    /// texts, `UILang/`.
    std::string sourceFolder;

    /// The bundle to make, its name ending in ".app", or the one file, ending in ".run".
    std::string outputPath;

    /// The bundle with everything but the two archives.
    std::string templatePath;

    /// The carried parts in the place of the template's `Contents/Frameworks`.
    std::optional<std::string> frameworksPath;

    /// Carry what windows need, so that they open on any machine with a display.
    bool withWindows = true;

    /// The program that one file begins with.
    std::string runProgramPath;

    /// The program that makes a picture of a drawing.
    std::string drawProgramPath;

    /// What everything in the archives gets as its time, in seconds since 1970-01-01 UTC; its own, unless
    /// told.
    std::optional<std::int64_t> time;

    /// Replace a package that is already at `outputPath`.
    bool replace = false;
};

}  // namespace zpk_packager
