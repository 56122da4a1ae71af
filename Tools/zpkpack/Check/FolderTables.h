// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "Tools/zpkpack/Check/FindingList.h"
#include "Tools/zpkpack/Check/TableText.h"

namespace zpk_packager {

/// The string tables of one folder.
class FolderTables {
public:
    /// An entry and the table in which it is found; both null where it is not.
    struct Found {
        const TableText* table = nullptr;
        const TableText::Entry* entry = nullptr;
    };

    FolderTables(const std::string& folder, FindingList& findings);

    /// In the order in which a key is looked for in them.
    const std::vector<TableText>& tables() const { return m_tables; }
    bool isEmpty() const { return m_tables.empty(); }

    /// Where the launcher finds the key.
    Found find(const std::string& key) const;

    /// The table that holds the texts of a language for every platform.
    static std::string defaultTable(const std::string& folder);

    /// How often the place of the products stands in a text; once is right in the one that has it.
    static std::size_t placeholdersIn(const std::string& text);

private:
    std::vector<TableText> m_tables;
};

}  // namespace zpk_packager
