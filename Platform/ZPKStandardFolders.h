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
    /// `$TMPDIR` where it names a folder by an absolute path, else `/tmp`. Where that folder is not the
    /// user's own, or others may write to it, the private folder `com.varno.zephyrkit-<uid>` inside it, made
    /// with mode 0700 and checked before use: a real folder, owned by the user, mode 0700; a link or another
    /// owner's folder is refused. A folder on a file system mounted `noexec` is passed over for
    /// `$XDG_CACHE_HOME`, else `~/.cache` (made when missing), by the same rules; where programs may
    /// not run from that one either there is no temporary folder.
    static std::optional<std::string> temporaryFolder();
};
