// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/// Looks at property lists in XML before the library does: the library reads and frees them
/// recursively, so that a few hostile bytes could use up the stack. May be called from any thread.
class ZPKPropertyListXMLGuard {
public:
    ZPKPropertyListXMLGuard() = delete;

    /// The elements and the text of an XML list, without comments, processing instructions, document
    /// type and CDATA marks; nothing when it is nested deeper than `deepest`, has more than
    /// `mostKeys` keys, or its elements do not close.
    static std::optional<std::string> plainText(std::string_view text, std::size_t deepest,
                                                std::size_t mostKeys);
};
