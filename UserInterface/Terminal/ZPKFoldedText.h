// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// Texts in lines that a terminal has room for.
class ZPKFoldedText {
public:
    ZPKFoldedText() = delete;

    /// `text`, which is harmless, in lines of at most `columns` columns (at least 1 is taken): folded at
    /// blanks and between ideographs, where punctuation allows; a word that is longer than a line is cut.
    /// What continues an indented line, such as a product's name, is indented a little more.
    static std::string of(std::string_view text, std::size_t columns);
};
