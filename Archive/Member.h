// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>

namespace zpk_archive {

/// One member's header.
struct Member {
    std::string name;
    mode_t mode = 0;  ///< Type and permission bits.
    std::int64_t size = 0;
    std::int64_t modifiedSeconds = 0;
    unsigned linkCount = 1;
    std::string symbolicLinkTarget;

    // What only a reader knows.
    std::uint64_t device = 0;  ///< With `inode` the same for all names of one file.
    std::uint64_t inode = 0;
    bool dataComeWithLastName = false;  ///< Of several names of one file (newc); else with each.
};

}  // namespace zpk_archive
