// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <sys/stat.h>

#include <functional>
#include <string>
#include <vector>

#include "Base/ZPKFileDescriptor.h"

/// One place in a folder tree, moved down and up by names and open folders alone: no link is ever
/// followed, nothing depends on the length of a path, and the number of open descriptors is bounded
/// whatever the depth: two are enough. Used by the file operations on whole trees. Failures leave their cause
/// in errno. One thread uses one walker.
class ZPKFolderWalker {
public:
    struct Entry {
        const char* name;
        /// A `DT_` value of <dirent.h>; `DT_UNKNOWN` is already resolved where it could be.
        unsigned char type;
    };

    enum class Access {
        /// Takes folders as they are.
        Plain,
        /// Gives the owner of a folder all permissions to it, and refuses to enter a mounted one.
        ForRemoval,
    };

    explicit ZPKFolderWalker(Access access) : m_access(access) {}

    /// Goes into the folder `name` of the open folder `parent`; the start of a walk. False when it
    /// is no folder that may be entered.
    bool enterAt(int parent, const std::string& name);

    /// Goes into the folder `name` of the current one. False when it is no folder that may be
    /// entered, or one that the walk is already in.
    bool enter(const std::string& name);

    /// Goes back up. False, and the walk is at its end, when the way back is no longer there
    /// because somebody has moved the folder meanwhile.
    bool leave();

    bool isInside() const { return !m_levels.empty(); }

    /// The current folder.
    int descriptor() const { return m_levels.back().descriptor.get(); }
    const std::string& name() const { return m_levels.back().name; }

    /// The path from the folder where the walk started down to the current one; empty there and outside.
    std::string pathBelowStart() const;

    const struct statx& attributes() const { return m_levels.back().attributes; }

    /// Gives the visitor each entry of the current folder, from the first one on, in the order in which the
    /// file system gives them, and keeps none; false when reading failed half-way.
    bool visitEntries(const std::function<void(const char* name, unsigned char type)>& visit) const;

    /// Reads the entries of the current folder, in the order in which the file system gives them; false when
    /// reading failed half-way.
    bool readEntries();

    /// The next entry read but not yet given, or null at the end. Valid until the next call here.
    const Entry* nextEntry();

    /// Gives the owner of an open folder all permissions to it, and nobody else any; the folder may be open
    /// as a place only. Takes `/proc`.
    static bool giveToOwner(int folder);

    /// True when something is mounted on the folder with these attributes.
    static bool isMounted(const struct statx& attributes);

private:
    struct Level {
        ZPKFileDescriptor descriptor;
        struct statx attributes;
        std::string name;
        std::vector<char> entries;  ///< As the system gave them.
        std::size_t given = 0;      ///< Bytes of them.
    };

    ZPKFileDescriptor openFolder(int parent, const std::string& name);

    /// Leaves the descriptors of the upper levels to others; false when none had one.
    bool giveUpUpperLevels();

    bool isInsideFolder(const struct statx& attributes) const;

    Access m_access;
    std::vector<Level> m_levels;
    Entry m_entry{};  ///< That was given last.
};
