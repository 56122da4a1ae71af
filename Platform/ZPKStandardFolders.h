// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <optional>
#include <string>

/// Where the host keeps things. Read from the environment at each call; main thread only.
class ZPKStandardFolders {
public:
    ZPKStandardFolders() = delete;

    /// The first entry of `$XDG_DATA_DIRS` that is an absolute path, `/usr/local/share` when the
    /// variable is unset or empty; nothing when it is set and no entry is absolute.
    static std::optional<std::string> localLibraryFolder();

    /// `Application Support` inside the local Library folder; nothing when there is no
    /// local Library folder.
    static std::optional<std::string> localApplicationSupportFolder();

    /// The machine-wide users folder, `/home`.
    static std::string usersFolder();

    /// The current user's home folder: `$HOME`, else the user database's; empty when neither knows.
    static std::string homeFolder();

    /// The folder for this user's temporary files, without a trailing separator, or nothing when no
    /// safe one can be had.
    ///
    /// `$TMPDIR` where it names a folder by an absolute path, else `/tmp`. Used as it is where it is the
    /// user's own and nobody else may write to it. Else, where it is root's or the user's own and sticky,
    /// the private folder `com.varno.zephyrkit-<uid>` inside it, made with mode 0700; one that is there
    /// already is taken only if it is a real folder of the user's with that mode. Otherwise, and where
    /// programs may not run from it (`noexec`), `$XDG_CACHE_HOME`, else `~/.cache` (made when missing), by
    /// the same rules; where that will not do either there is no temporary folder, and neither is there one
    /// without /proc.
    static std::optional<std::string> temporaryFolder();

    /// Why `temporaryFolder` gives nothing, in words for a failure.
    static std::string reasonForNoTemporaryFolder();
};
