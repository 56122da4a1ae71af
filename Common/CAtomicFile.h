// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

namespace varno_zpk {

/// Files that are only ever seen whole.
class CAtomicFile {
public:
    CAtomicFile() = delete;

    /// Puts a file with these contents in the place of the item at `path`: written beside it under
    /// a name of its own, then renamed. An existing file's permissions are kept. On failure (false)
    /// the old item is as it was and nothing is left beside it.
    static bool Replace(const char* path, const std::string& contents);
};

}  // namespace varno_zpk
