// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>
#include <vector>

#include "Archive/FileIdentity.h"

struct dirent;

namespace zpk_archive {

/// How many names each file has inside one tree; links from elsewhere are nothing that an archive holds.
class LinkCounts {
public:
    struct File {
        FileIdentity identity;
        unsigned names = 1;
        std::uint64_t number = 0;
    };

    /// Knows of no file.
    LinkCounts() = default;
    /// Looks through the open folder, which stays the caller's. What cannot be looked into is passed over.
    static LinkCounts ofTree(int folder);

    /// The file, numbered from 1 on in the order in which files are asked for; null when the tree has just
    /// one name of it. The number does not depend on the machine.
    const File* find(const FileIdentity& file);

private:
    /// Counts what is none.
    bool isFolder(int parent, const dirent& item);
    void keepSeveral();

    std::vector<File> m_files;
    std::uint64_t m_numbered = 0;
};

}  // namespace zpk_archive
