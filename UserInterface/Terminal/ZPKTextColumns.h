// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <string_view>

/// How much room a text takes on a terminal, whatever the locale.
class ZPKTextColumns {
public:
    ZPKTextColumns() = delete;

    /// 0 for a mark that stands in the column of the character before it, 2 for a wide character, else 1.
    static std::size_t ofCharacter(char32_t character);

    /// The columns of a harmless text without line feeds; bytes that are no UTF-8 take none.
    static std::size_t of(std::string_view text);
};
