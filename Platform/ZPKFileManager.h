// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <functional>
#include <string>
#include <vector>

/// The host's file operations. All paths are byte strings (UTF-8 by convention, but any bytes are
/// accepted). No operation says why it failed and none throws anything but `std::bad_alloc`.
/// May be called from any thread.
class ZPKFileManager {
public:
    ZPKFileManager() = delete;

    /// True when anything, a folder included, exists at `path`; a link is followed, so a dangling
    /// link does not exist.
    static bool fileExists(const std::string& path);

    /// True when `path` leads to a folder; a link is followed.
    static bool isFolder(const std::string& path);

    /// True when the item at `path` is itself a folder; a link to a folder is not one.
    static bool isFolderNotFollowingLinks(const std::string& path);

    /// True when the current user may execute the item at `path` (for a folder: search it).
    static bool isExecutableFile(const std::string& path);

    /// True when `path` leads to a regular file that the current user may execute.
    static bool isExecutableRegularFile(const std::string& path);

    /// Creates the folder and its missing parents with `mode`, less the process's umask. True when
    /// the folder was made or a folder was already there.
    static bool createFolderWithIntermediateFolders(const std::string& path, unsigned int mode);

    /// Removes the item at `path` and, for a folder, everything in it. Links are removed, never
    /// followed; folders that their owner may not read or write are removed too; what is mounted in
    /// a folder stays. A path that ends in "." or ".." names nothing to remove. False when nothing
    /// was there or something remains.
    static bool removeItem(const std::string& path);

    /// Copies a file, a link or a whole folder with permissions (less set-ID bits) and times. Never
    /// overwrites: false when anything exists at `destination`, when a folder would be copied into
    /// itself, or when part of the copy failed (what was written remains). FIFOs, sockets and
    /// devices are not copied.
    static bool copyItem(const std::string& source, const std::string& destination);

    /// Names of the entries directly in `folder`, hidden ones included, in the order in which the
    /// file system gives them. False and an empty list when the folder cannot be read.
    static bool contentsOfFolder(const std::string& folder, std::vector<std::string>& outNames);

    /// Paths, relative to `folder`, of everything below it at any depth, each folder before what it
    /// holds, otherwise in the order in which the file system gives them. `folder` itself may be a
    /// link; links below it are listed and not followed. What cannot be read, or has a path that is
    /// too long to be used, is left out.
    static void subpathsOfFolder(const std::string& folder, std::vector<std::string>& outPaths);

    enum class ItemKind { Folder, Link, Other };
    using ItemVisitor = std::function<void(const std::string& path, ItemKind kind)>;

    /// Gives the visitor each item of `subpathsOfFolder` in turn, with what the item itself is.
    static void enumerateFolder(const std::string& folder, const ItemVisitor& visitor);
};
