// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <sys/stat.h>
#include <sys/types.h>

namespace zpk_archive {

/// Which thing on disk a name means.
struct FileIdentity {
    FileIdentity() = default;
    explicit FileIdentity(const struct stat& status)
        : device(status.st_dev), inode(status.st_ino), type(status.st_mode & S_IFMT) {}
    auto operator<=>(const FileIdentity&) const = default;  // NOLINT(modernize-use-nullptr): there is none

    dev_t device = 0;
    ino_t inode = 0;
    mode_t type = 0;
};

}  // namespace zpk_archive
