// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <string_view>

/// Looks at binary property lists before the library does: the library reads and frees them
/// recursively and repeats what a list refers to twice, so that a few hostile bytes could use up the
/// stack or the memory. May be called from any thread.
class ZPKPropertyListBinaryGuard {
public:
    ZPKPropertyListBinaryGuard() = delete;

    /// True when the texts of the list hold no null characters and its objects refer to each other
    /// without a circle, nested no deeper than `deepest`, no dictionary has more than `mostKeys` keys, and
    /// they are not vastly more numerous read out than they are in the file.
    static bool isReasonable(std::string_view bytes, std::size_t deepest, std::size_t mostKeys);
};
