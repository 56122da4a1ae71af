// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace zpk_archive {

/// A member's name taken apart: a path below the folder that is written. Only in this form does a name
/// come near the file system, and a name that leads out of the folder has no such form.
class MemberPath {
public:
    /// The folder itself.
    MemberPath() = default;

    /// "." and doubled slashes vanish, so that "." and "./" give the folder itself. Throws MemberFailure
    /// when the name is empty, absolute, holds "..", has a component that no file can be called, or has more
    /// than 2048 components.
    explicit MemberPath(std::string_view name);

    bool isFolderItself() const { return m_starts.empty(); }

    /// How many components there are.
    std::size_t depth() const { return m_starts.size(); }

    /// Valid as long as this object.
    const char* component(std::size_t index) const { return m_components.c_str() + m_starts[index]; }

    /// The last component; the path is not that of the folder itself.
    const char* leaf() const { return component(depth() - 1); }

    /// The path of the thing called `leaf` in the same folder.
    MemberPath sibling(std::string_view leaf) const;

    /// The components joined with slashes.
    std::string text() const;

    std::size_t hash() const;

    bool operator==(const MemberPath&) const = default;

private:
    void append(std::string_view component);

    std::string m_components;  ///< Each followed by a null character, as system calls take it.
    std::vector<std::uint32_t> m_starts;
};

}  // namespace zpk_archive
