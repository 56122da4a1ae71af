// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "Archive/FileBatch.h"
#include "Archive/FileIdentity.h"
#include "Archive/FilesInFlight.h"
#include "Archive/MemberPath.h"
#include "Archive/OpenFolder.h"
#include "Archive/PostponedModes.h"
#include "Base/ZPKFileDescriptor.h"

namespace zpk_archive {

/// Writes things below one folder and nowhere else: each step of a path is taken by descriptor without
/// following symbolic links, and a file is always a new file, never the rest of an old one. No path
/// given here is that of the folder itself. Not for several threads at once. Operations throw MemberFailure,
/// or VolumeFullFailure.
///
/// Small files may be sent instead of made: they are in flight then, made in threads of their own, and each
/// operation comes out as if all that was sent before it were there. An operation that could tell the
/// difference, or that fails, waits for them first. Those that cannot be made are told of in their order; any
/// operation throws WritingEnded where that was because the volume is full.
///
/// Modes and times that have to wait, those of folders above all, are kept for some 40,000 paths. When more
/// come, they are set early: then a member that comes later may change the time of a folder that was left
/// long ago, or find it shut.
class FolderWriter {
public:
    /// Takes a path's text and the reason why its mode or time could not be set.
    using Failed = std::function<void(const std::string&, const std::string&)>;

    /// The size of the largest files that may be sent.
    static constexpr std::size_t kSmallFile = FileBatch::kFileLimit;

    /// Opens `folder`, making it when it is missing; `writers` threads make small files. Throws
    /// ArchiveFailure.
    explicit FolderWriter(const std::string& folder, Failed failed = {},
                          std::size_t writers = FilesInFlight::suitableWriters());

    /// Of the folder; stays this object's.
    int descriptor() const { return m_root->descriptor(); }

    /// Who is told of a file that was sent and cannot be made; nobody by default.
    void tellOfFiles(Failed failed) { m_fileFailed = std::move(failed); }

    /// A small file with all that it holds and gets, in place of whatever file is there. A failure is told of
    /// under `name`.
    void sendFile(const MemberPath& path, const std::string& name, std::span<const std::uint8_t> contents,
                  const ModeAndTime& modeAndTime);
    /// Waits until nothing is in flight.
    void settle();

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
    struct Step {
        std::string name;
        std::shared_ptr<OpenFolder> folder;
    };

    using SharedFolder = std::shared_ptr<OpenFolder>;

    const SharedFolder& openParent(const MemberPath& path, bool makeMissing);
    /// The same; what its last component means is settled.
    const SharedFolder& openSettled(const MemberPath& path, bool makeMissing);
    SharedFolder openFolder(const OpenFolder& parent, const char* name, bool makeMissing);
    ZPKFileDescriptor open(const OpenFolder& parent, const char* name, int flags, mode_t mode = 0);
    void settleName(const OpenFolder& parent, const char* name);
    void clearPlace(const OpenFolder& parent, const char* name);

    void applyOrTell(const MemberPath& path, const PostponedModes::Item& item);
    void apply(const MemberPath& path, const PostponedModes::Item& item);

    SharedFolder m_root;
    /// The folders on the way to the last member's parent: members of one folder follow each other.
    std::vector<Step> m_way;
    PostponedModes m_postponed;
    Failed m_failed;
    Failed m_fileFailed;
    FilesInFlight m_files;
};

}  // namespace zpk_archive
