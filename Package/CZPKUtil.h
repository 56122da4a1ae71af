// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <vector>

namespace varno_zpk {

/// Operations on the package archives and on files and folders. Paths are UTF-8 byte strings.
/// Nothing here says why it failed; the archive operations say nothing at all, and callers look at
/// the file system afterwards, or not. May be called from any thread.
class CZPKUtil {
public:
    CZPKUtil() = delete;

    /// Archives the folder `src` into the file `dst` with the archive tool, the folder itself being
    /// the archive's one top-level entry. Waits for the tool.
    static void Compress(const std::string& src, const std::string& dst);

    /// Unpacks the plain archive `src` into the folder `dst` with the archive tool, whose standard
    /// error is swallowed. Waits for the tool. A damaged archive leaves what could be read of it.
    static void Extract(const std::string& src, const std::string& dst);

    /// Scrambles the plain archive `src` into `dst`, replacing any file there: the first 102400
    /// bytes move to the end. A missing `src` leaves an empty `dst`.
    static void Fake(const std::string& src, const std::string& dst);

    /// Unscrambles `src` into `dst`: the last 102400 bytes move to the front. A file of 102400
    /// bytes or fewer is copied as it is, and then an existing `dst` is kept; a larger one replaces
    /// it.
    static void Unfake(const std::string& src, const std::string& dst);

    /// Creates the folder and any missing parents with permissions 0777 (less the umask). True when
    /// the folder was made.
    static bool MakeDirectoryWithIntermediateDirectories(const std::string& path);

    /// Copies a file or a folder to `dst`, in place of anything that is there; makes the parent
    /// folder first.
    static bool Copy(const std::string& src, const std::string& dst);

    /// Removes the item at `path` and, for a folder, everything in it. False when nothing was there.
    static bool DeleteFolder(const std::string& path);

    /// The same as `DeleteFolder`, whatever the item is.
    static bool DeleteFile(const std::string& path);

    /// Appends to `list` the full path of every item below `folder`, at any depth, that exists and
    /// is not a folder, in the order of the file system's recursive listing.
    static void GetFilePathList(const std::string& folder, std::vector<std::string>* list);

    /// True when anything exists at `path`, a folder included.
    static bool IsFileExist(const std::string& path);

    /// True when the item at `path` is a folder.
    static bool IsFolderExist(const std::string& path);
};

}  // namespace varno_zpk
