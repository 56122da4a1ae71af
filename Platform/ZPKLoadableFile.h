// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <vector>

#include "Base/ZPKFailure.h"

/// What a loader takes for granted of the libraries and programs that it puts into memory: it ends the
/// process, or lets it die, where that is not so. May be called from any thread.
class ZPKLoadableFile {
public:
    ZPKLoadableFile() = delete;

    /// Succeeds where the file is a library or program of x86-64 that was not cut short. What else may be
    /// wrong with its contents is not seen.
    static ZPKOutcome check(const std::string& path);

    /// The same; gives the names of the libraries that the file has the loader look for.
    static ZPKResult<std::vector<std::string>> neededLibraries(const std::string& path);
};
