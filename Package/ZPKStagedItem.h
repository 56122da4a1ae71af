// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

/// What the package put at a place in the staging folder, as it was found when this object was made. Its
/// archives may hold links, and a link is as good as what it leads to only as long as that is in the staging
/// folder, too. A value; may be used from any thread.
class ZPKStagedItem {
public:
    enum class Standing {
        /// Nothing is there.
        Absent,
        /// An item of the staging folder.
        Inside,
        /// Something is there that leads outside or nowhere, or may not be looked at: not the package's.
        Unusable,
    };

    /// `path` is written as a path in `stagingFolder`.
    ZPKStagedItem(const std::string& path, const std::string& stagingFolder);

    Standing standing() const { return m_standing; }

    /// The path of the item without links on the way to it, itself possibly a link; empty when it is not
    /// inside.
    const std::string& place() const { return m_place; }

    /// The path, without links, of what the item is or leads to; empty when it is not inside.
    const std::string& target() const { return m_target; }

private:
    Standing m_standing = Standing::Unusable;
    std::string m_place;
    std::string m_target;
};
