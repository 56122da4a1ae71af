// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "Tools/zpkpack/Check/TableText.h"

namespace zpk_packager {

/// Puts other texts into the bytes of a string table and leaves everything else as it is: comments, blanks,
/// line ends, the order of the entries and those that stay.
class TableEditor {
public:
    /// The bytes of a table without faults; none for a table that is to be made.
    explicit TableEditor(std::string bytes) : m_bytes(std::move(bytes)) {}

    /// Gives an entry of the table another text. Once for each entry.
    void replace(const TableText::Entry& entry, const std::string& text);

    /// Puts an entry behind the last one.
    void add(const std::string& key, const std::string& text);

    std::string result() const;

private:
    struct Change {
        std::size_t begin;
        std::size_t end;
        std::string value;
    };

    static std::string withText(std::string_view value, const std::string& quoted);

    std::string m_bytes;
    std::vector<Change> m_changes;
    std::string m_added;
};

}  // namespace zpk_packager
