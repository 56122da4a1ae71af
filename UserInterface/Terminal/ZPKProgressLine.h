// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>

/// How far something is, as the line that a terminal rewrites: a bar, the percentage, the time that has
/// passed, the title.
struct ZPKProgressLine {
    /// Nothing when the end is not known: the bar then shows that time passes.
    std::optional<int> percent;
    std::chrono::seconds elapsed{0};
    std::string title;
    /// The code of the language that the numbers are written in.
    std::string language;

    /// The line without the title, in at most `columns` columns: what there is no room for is left out, the
    /// bar first.
    std::string withoutTitle(std::size_t columns) const;

    /// The line with the title; nothing when it has more than `columns` columns.
    std::optional<std::string> whole(std::size_t columns) const;
};
