// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <string_view>

/// Paths as text: nothing here but `resolved`, `resolvedItem` and `isItemOrInside` looks at the file
/// system. Any bytes but null characters may stand in a path. May be called from any thread.
class ZPKPath {
public:
    ZPKPath() = delete;

    /// `folder` and `component` joined with one "/"; the other one alone when one is empty.
    static std::string join(const std::string& folder, const std::string& component);

    /// The path without the separators at its end; "/" stays.
    static std::string withoutTrailingSeparators(std::string_view path);

    /// The last component, without trailing separators; "/" for the root.
    static std::string lastComponent(const std::string& path);

    /// The folder in which the last component stands: "." where the path has one component, "/" for
    /// what stands in the root.
    static std::string parent(const std::string& path);

    /// The text after the last "." of the last component; empty when there is none.
    static std::string extension(const std::string& path);

    /// True when `inner` names `outer` or something below it, compared by components as they are
    /// written; separators at the end do not count. Both are absolute or both relative, and free of "..";
    /// in an empty `outer` there is nothing.
    static bool isSameOrInside(std::string_view inner, std::string_view outer);

    /// The path without links, "." and ".."; empty when nothing is there.
    static std::string resolved(const std::string& path);

    /// The path of an item without links on the way to it, the item itself possibly a link or
    /// missing; empty when its folder is not there.
    static std::string resolvedItem(const std::string& path);

    /// True when removing the item at `outer` would take the item at `inner` with it, whether or not
    /// they are there; both are taken as they are, however they are written. An item whose folder is
    /// missing is in nothing.
    static bool isItemOrInside(const std::string& inner, const std::string& outer);
};
