// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "Base/ZPKFileDescriptor.h"

namespace zpk_archive {

/// Permission bits and time that a written thing shall have.
struct Attributes {
    mode_t permissions = 0;
    timespec modified{};
};

/// The components of a path below the folder that is written.
using MemberPath = std::vector<std::string>;

/// Which thing on disk a name means.
struct Identity {
    Identity() = default;
    explicit Identity(const struct stat& status)
        : device(status.st_dev), inode(status.st_ino), type(status.st_mode & S_IFMT) {}
    bool operator==(const Identity&) const = default;

    dev_t device = 0;
    ino_t inode = 0;
    mode_t type = 0;
};

/// Writes things below one folder and nowhere else: each step of a path is taken by descriptor without
/// following symbolic links, and a file is always a new file, never the rest of an old one. Operations
/// throw MemberFailure. Not for several threads at once.
///
/// libarchive's own disk writer is not used: it has to change the process's working folder to refuse
/// absolute names, reports a full disk as a warning, and lets FIFOs, devices and set-user-ID bits pass.
class FolderWriter {
public:
    /// Opens `folder`, making it when it is missing. Throws ArchiveFailure.
    explicit FolderWriter(const std::string& folder);

    /// Makes a folder or takes the one that is there; its attributes are set by `finish`.
    void makeFolder(const MemberPath& path, const Attributes& attributes);
    void makeSymbolicLink(const MemberPath& path, const std::string& target, const timespec& modified);

    /// A new empty file, in place of whatever file was there.
    ZPKFileDescriptor makeFile(const MemberPath& path);
    /// Sets the attributes of a file just written and closes it.
    void closeFile(ZPKFileDescriptor file, const Attributes& attributes);
    /// Like `closeFile`, for a file to which data may still come: its attributes are set by `finish`.
    void closeFileForNow(ZPKFileDescriptor file, const MemberPath& path, const Attributes& attributes);

    /// A second name for what `target` names, which must still be the thing that `expected` tells of.
    void makeHardLink(const MemberPath& path, const MemberPath& target, const Identity& expected);
    /// The file that `path` names, emptied; it must be the one that `expected` tells of.
    ZPKFileDescriptor reopenFile(const MemberPath& path, const Identity& expected);

    /// What `path` names now; false when there is nothing.
    bool examine(const MemberPath& path, struct stat& status);
    /// A path-only descriptor of the file or folder.
    ZPKFileDescriptor locate(const MemberPath& path);
    /// The contents of a regular file of at most `limit` bytes.
    std::string readFile(const MemberPath& path, std::size_t limit);
    /// Removes a file or link; silent when it is missing.
    void remove(const MemberPath& path);

    /// Sets the attributes that had to wait; calls `failed` for each path where that was not possible.
    template <typename Failed>
    void finish(const Failed& failed) {
        sortPostponed();
        for (const Postponed& item : m_postponed) {
            try {
                apply(item);
            } catch (const std::exception& failure) {
                failed(item.path, failure.what());
            }
        }
        m_postponed.clear();
    }

private:
    struct Postponed {
        std::string path;  // Joined, since there may be very many.
        Attributes attributes;
        mode_t type;
    };
    struct OpenFolder {
        std::string name;
        ZPKFileDescriptor descriptor;
    };

    int openParent(const MemberPath& path, bool makeMissing);
    int openFolder(int parent, const std::string& name, bool makeMissing);
    void clearPlace(int parent, const std::string& name);
    void sortPostponed();
    void apply(const Postponed& item);

    ZPKFileDescriptor m_root;
    /// The folders on the way to the last member's parent: members of one folder follow each other.
    std::vector<OpenFolder> m_way;
    std::vector<Postponed> m_postponed;
};

}  // namespace zpk_archive
