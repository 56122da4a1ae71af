// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

namespace zpk_packager {

/// Whether an archive holds what it was made of.
class ArchiveCheck {
public:
    ArchiveCheck() = delete;

    /// Reads the plain archive to its end and compares the items in it with those of `sourceFolder`,
    /// which it holds under the top-level name `name`. Throws `PackagerFailure` naming the first item
    /// that is missing, or the damage.
    static void run(const std::string& archivePath, const std::string& sourceFolder, const std::string& name);
};

}  // namespace zpk_packager
