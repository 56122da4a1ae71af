// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

/// One mounted file system.
struct ZPKMount {
    /// What is mounted: a device path, or any other text that the file system gives.
    std::string source;
    /// Where it is mounted.
    std::string target;
    /// The device of the file system; its major number is 0 where no block device stands behind it.
    dev_t device = 0;
};

/// The mount table at the time of its reading. Immutable; may be read from any thread.
class ZPKMountTable {
public:
    /// This process's mount table; an empty one when it cannot be read.
    static ZPKMountTable current();

    /// A table in the format of /proc/self/mountinfo; for tests.
    explicit ZPKMountTable(const std::string& file);

    /// In mount order.
    const std::vector<ZPKMount>& mounts() const { return m_mounts; }

    /// The file system on which the existing item at `path` lies; nothing when there is no such item.
    std::optional<ZPKMount> mountOfPath(const std::string& path) const;

private:
    std::vector<ZPKMount> m_mounts;
};
