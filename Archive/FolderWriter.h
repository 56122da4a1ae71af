// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "Archive/FileIdentity.h"
#include "Archive/MemberPath.h"
#include "Base/ZPKFileDescriptor.h"

namespace zpk_archive {

/// What a written thing shall have beside its contents.
struct ModeAndTime {
    mode_t permissions = 0;
    timespec modified{};
};

/// Writes things below one folder and nowhere else: each step of a path is taken by descriptor without
/// following symbolic links, and a file is always a new file, never the rest of an old one. No path
/// given here is that of the folder itself. Operations throw MemberFailure, or VolumeFullFailure. Not for
/// several threads at once.
///
/// Modes and times that have to wait, those of folders above all, are kept for some 40,000 paths. When more
/// come, they are set early: then a member that comes later may change the time of a folder that was left
/// long ago, or find it shut.
class FolderWriter {
public:
    /// Takes a path's text and the reason why its mode or time could not be set.
    using Failed = std::function<void(const std::string&, const std::string&)>;

    /// Opens `folder`, making it when it is missing. Throws ArchiveFailure.
    explicit FolderWriter(const std::string& folder, Failed failed = {});

    /// Of the folder; stays this object's.
    int descriptor() const { return m_root.get(); }

    /// Makes a folder or takes the one that is there; its mode and time are set by `finish`.
    void makeFolder(const MemberPath& path, const ModeAndTime& modeAndTime);
    void makeSymbolicLink(const MemberPath& path, const std::string& target, const timespec& modified);

    /// A new empty file, in place of whatever file was there.
    ZPKFileDescriptor makeFile(const MemberPath& path);
    /// Gives a file just written its mode and time and closes it.
    void closeFile(ZPKFileDescriptor file, const ModeAndTime& modeAndTime);
    /// Like `closeFile`, for a file that is still to be read or written: `finish` gives it the two.
    void closeFileForNow(ZPKFileDescriptor file, const MemberPath& path, const ModeAndTime& modeAndTime);

    /// A second name for what `target` names, which must still be the thing that `expected` tells of.
    void makeHardLink(const MemberPath& path, const MemberPath& target, const FileIdentity& expected);
    /// The file that `path` names, emptied; it must be the one that `expected` tells of.
    ZPKFileDescriptor reopenFile(const MemberPath& path, const FileIdentity& expected);

    /// What `path` names now; nothing when it cannot be reached.
    std::optional<FileIdentity> identify(const MemberPath& path);
    /// A path-only descriptor of the file or folder.
    ZPKFileDescriptor locate(const MemberPath& path);
    /// The contents of a regular file of at most `limit` bytes.
    std::string readFile(const MemberPath& path, std::size_t limit);
    /// Removes a file or link; silent when it is missing.
    void remove(const MemberPath& path);

    /// Sets the modes and times that had to wait.
    void finish();

private:
    struct Postponed {
        ModeAndTime modeAndTime;
        mode_t type = 0;
    };
    struct OpenFolder {
        std::string name;
        ZPKFileDescriptor descriptor;
    };

    int openParent(const MemberPath& path, bool makeMissing);
    void postpone(const MemberPath& path, const Postponed& item);
    void applyAllBut(const std::string& wayThatStays);
    void apply(const MemberPath& path, const Postponed& item);

    ZPKFileDescriptor m_root;
    /// The folders on the way to the last member's parent: members of one folder follow each other.
    std::vector<OpenFolder> m_way;
    /// By the path's text, in an order in which a folder comes before all that is in it.
    std::map<std::string, Postponed> m_postponed;
    std::size_t m_postponedCost = 0;
    Failed m_failed;
};

}  // namespace zpk_archive
