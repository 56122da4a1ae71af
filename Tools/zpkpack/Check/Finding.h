// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <string>

namespace zpk_packager {

struct CheckRule;

/// Line and column, both from 1 on; the column counts characters.
struct TextPlace {
    std::size_t line = 1;
    std::size_t column = 1;
};

/// One thing that a check has to say.
struct Finding {
    const CheckRule* rule;
    /// As it was named to the packager, any bytes.
    std::string path;
    TextPlace place;
    /// A phrase in English, as a terminal may show it.
    std::string text;
};

}  // namespace zpk_packager
