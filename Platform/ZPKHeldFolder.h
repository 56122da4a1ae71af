// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <sys/stat.h>

#include <string>

#include "Base/ZPKFileDescriptor.h"

/// A folder that this process has open as its own. As long as this object is there, what this room does by
/// path to the folder's contents goes by its descriptor: it means this folder, wherever somebody has moved it
/// and whatever stands at its path now. One at a time; nothing is done below its path while it begins or
/// ends. The static functions may be called from any thread.
class ZPKHeldFolder {
public:
    /// `folder` is open at `path`, if only as a place (`O_PATH`).
    ZPKHeldFolder(const std::string& path, ZPKFileDescriptor folder);
    ~ZPKHeldFolder();
    ZPKHeldFolder(const ZPKHeldFolder&) = delete;
    ZPKHeldFolder& operator=(const ZPKHeldFolder&) = delete;

    int descriptor() const { return m_folder.get(); }

    /// False when nothing, or something else, stands at the path. What cannot be told counts as in its place.
    bool isInItsPlace() const;

    /// Where a system call finds an item: the name is below the open folder, which may be AT_FDCWD.
    struct Place {
        int folder;
        const char* name;
    };

    /// Of what stands at `path`, in whose text the name is: by the held folder for that and what is below it.
    static Place placeOf(const std::string& path);
    static Place placeOf(std::string&&) = delete;

    /// Asks for the attributes of what is at `path`, with the flags of `fstatat`: none follow a link. False,
    /// with the cause in errno, when there is nothing.
    static bool look(const std::string& path, struct stat& outAttributes, int flags = 0);

    /// The folder that is held at `path`, or null.
    static const ZPKHeldFolder* at(const std::string& path);

    /// False for a path in a held folder that is no longer in its place: for who hands the path on.
    static bool isToBeFoundAt(const std::string& path);

private:
    /// What follows the folder's own path in `path`, or null when that leads elsewhere.
    const char* nameBelow(const std::string& path) const;

    std::string m_path;
    ZPKFileDescriptor m_folder;
};
