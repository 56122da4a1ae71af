// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <optional>
#include <string>
#include <string_view>

/// Looks at property lists before the library does: the library reads and frees them recursively and
/// repeats what a binary list refers to twice, so that a few hostile bytes could use up the stack or
/// the memory.
class ZPKPropertyListGuard {
public:
    ZPKPropertyListGuard() = delete;

    /// The elements and the text of an XML list, without comments, processing instructions, document
    /// type and CDATA marks; nothing when it is nested deeper than `deepest`, or
    /// its elements do not close.
    static std::optional<std::string> plainXML(std::string_view text, std::size_t deepest);

    /// True when the texts of a binary list hold no null characters and its objects refer to each other
    /// without a circle, nested no deeper than `deepest`, and are not vastly more numerous read out than they
    /// are in the file.
    static bool isReasonableBinary(std::string_view bytes, std::size_t deepest);
};
