// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <string_view>

namespace zpk_packager {

/// The text of a symbolic link, as text: nothing here looks at the file system.
class LinkTarget {
public:
    /// The text outlives the object.
    explicit LinkTarget(std::string_view text) : m_text(text) {}

    bool isAbsolute() const { return m_text.starts_with('/'); }

    /// Whether it climbs above the top, followed from a folder `depth` levels below.
    bool climbsOutFrom(std::size_t depth) const;

private:
    std::string_view m_text;
};

}  // namespace zpk_packager
