// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "Archive/Archive.h"

namespace zpk_packager {

/// Whether an archive holds what it was made of.
class ArchiveCheck {
public:
    ArchiveCheck() = delete;

    /// Reads the plain archive to its end and compares the items in it with those of `sourceFolder`,
    /// which it holds under the top-level name `name`. Throws `PackagerFailure` naming the first item
    /// that is missing, or the damage. `counted`, if it is given, is told of the archive's bytes, on another
    /// thread.
    static void run(const std::string& archivePath, const std::string& sourceFolder, const std::string& name,
                    const zpk_archive::ByteCounter& counted = {});
};

}  // namespace zpk_packager
