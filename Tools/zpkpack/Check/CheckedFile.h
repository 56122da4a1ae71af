// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <optional>
#include <string>

#include "Tools/zpkpack/Check/FindingList.h"

namespace zpk_packager {

/// Reads the small files of a package that is somebody else's.
class CheckedFile {
public:
    CheckedFile() = delete;

    /// The bytes of the regular file at `path`, never waiting on anything else. Nothing when it is not
    /// there; nothing and a finding when it cannot be read or is too large to be looked at.
    static std::optional<std::string> read(const std::string& path, FindingList& findings);

    /// Whether an item, a link that leads nowhere included, is at `path`.
    static bool isThere(const std::string& path);
};

}  // namespace zpk_packager
