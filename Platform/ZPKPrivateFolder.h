// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "Base/ZPKFailure.h"
#include "Base/ZPKFileDescriptor.h"

/// Folders that are this user's alone: a real folder with mode 0700, whatever the umask and the
/// permissions that its parent hands down. May be called from any thread.
class ZPKPrivateFolder {
public:
    ZPKPrivateFolder() = delete;

    /// Makes the folder. Success says that this call made it, and that what is at `path` is this user's
    /// own real folder, with mode 0700, empty, and nothing mounted on it. Fails when anything is there
    /// already, and when the parent is missing; what a failed call has made it takes away.
    static ZPKOutcome makeNew(const std::string& path);

    /// The same; gives the very folder that was asked about, open as a place only (`O_PATH`).
    static ZPKResult<ZPKFileDescriptor> makeNewAndOpen(const std::string& path);

    /// Makes the folder, or takes the one that is there as it is: fails unless it is this user's own real
    /// folder with mode 0700. Nothing that is there already is changed.
    static ZPKOutcome makeOrFind(const std::string& path);

    /// What `makeNew` asks of the folder that it has made, which somebody may have exchanged since.
    static ZPKOutcome checkNew(const std::string& path);
};
