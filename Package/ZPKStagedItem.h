// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

/// What the package put at a place in the staging folder. Its archives may hold links, and a link is
/// as good as what it leads to only as long as that is in the staging folder, too. May be called from
/// any thread.
class ZPKStagedItem {
public:
    ZPKStagedItem() = delete;

    enum class Standing {
        /// Nothing is there.
        Absent,
        /// An item of the staging folder.
        Inside,
        /// Something is there that leads outside or nowhere, or may not be looked at: not the package's.
        Unusable,
    };

    /// `path` is written as a path in `stagingFolder`.
    static Standing standing(const std::string& path, const std::string& stagingFolder);
};
