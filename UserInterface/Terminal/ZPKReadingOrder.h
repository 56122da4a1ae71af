// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <string_view>

/// Keeps the signs of right-to-left texts where the reader looks for them. To a terminal that turns such
/// letters around every line begins at the left, so that a sign at a line's end stands right of it, and a
/// quotation mark at its beginning left of it.
class ZPKReadingOrder {
public:
    ZPKReadingOrder() = delete;

    /// The lines of a harmless text, with marks that take no room where such signs are. Other lines are as
    /// they were.
    static std::string marked(std::string_view lines);
};
