// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <string>

namespace zpk_packager {

/// What a string table says to those who translate it.
class TableComments {
public:
    TableComments() = delete;

    /// The comments in the lines directly above line `line` of a table, which is counted from 1, without the
    /// marks of a comment; empty when there are none.
    static std::string above(const std::string& bytes, std::size_t line);
};

}  // namespace zpk_packager
