// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <functional>
#include <string>
#include <vector>

#include "Base/ZPKFailure.h"

/// The host's file operations. All paths are byte strings (UTF-8 by convention, but any bytes are
/// accepted). Failures name the file and the cause; nothing throws anything but `std::bad_alloc`.
/// May be called from any thread.
class ZPKFileManager {
public:
    ZPKFileManager() = delete;

    /// True when anything, a folder included, exists at `path`; a link is followed, so a dangling
    /// link does not exist.
    static bool fileExists(const std::string& path);

    /// True when `path` leads to a folder; a link is followed.
    static bool isFolder(const std::string& path);

    /// True for a regular file and for a link to one.
    static bool isRegularFile(const std::string& path);

    /// True when the item at `path` is itself a folder; a link to a folder is not one.
    static bool isFolderNotFollowingLinks(const std::string& path);

    /// True when the current user may execute the item at `path` (for a folder: search it).
    static bool isExecutableFile(const std::string& path);

    /// True when `path` leads to a regular file that the current user may execute.
    static bool isExecutableRegularFile(const std::string& path);

    /// True when the item at `path` lies on a file system from which no program can be started ("noexec").
    static bool isOnFileSystemWithoutExecution(const std::string& path);

    /// Creates the folder and its missing parents with `mode`, less the process's umask. A folder that
    /// is there already is a success.
    static ZPKOutcome createFolderWithIntermediateFolders(const std::string& path, unsigned int mode);

    /// Removes the item at `path` and, for a folder, everything in it, as `ZPKTreeRemover` does. A path
    /// that ends in "." or ".." names nothing to remove. What a first pass leaves, a second one is sent
    /// after. Fails when nothing was there or something remains.
    static ZPKOutcome removeItem(const std::string& path);

    /// Copies a file, a link or a whole folder as `ZPKTreeCopier` does. Never overwrites: fails when
    /// anything exists at `destination`, when a folder would be copied into itself, or when part of the
    /// copy failed (what was written remains).
    static ZPKOutcome copyItem(const std::string& source, const std::string& destination);

    /// Names of the entries directly in `folder`, hidden ones included, in the order in which the
    /// file system gives them. An empty list and a failure when the folder cannot be read.
    static ZPKOutcome contentsOfFolder(const std::string& folder, std::vector<std::string>& outNames);

    /// Paths, relative to `folder`, of everything below it at any depth, each folder before what it
    /// holds, otherwise in the order in which the file system gives them. `folder` itself may be a
    /// link; links below it are listed and not followed. What cannot be read, or has a path that is
    /// too long to be used, is left out, and the failure names the first of it.
    static ZPKOutcome subpathsOfFolder(const std::string& folder, std::vector<std::string>& outPaths);

    enum class ItemKind { Folder, Link, Other };
    using ItemVisitor = std::function<void(const std::string& path, ItemKind kind)>;

    /// Gives the visitor each item of `subpathsOfFolder` in turn, its path with `prefix` in front, and what
    /// the item itself is.
    static ZPKOutcome enumerateFolder(const std::string& folder, const ItemVisitor& visitor,
                                      const std::string& prefix = {});

    /// The same items, but each folder's own before those of the folders in it, so that of the names only the
    /// folders' are kept in memory.
    static ZPKOutcome visitFolder(const std::string& folder, const ItemVisitor& visitor);
};
