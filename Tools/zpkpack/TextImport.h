// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "Tools/zpkpack/POFile.h"
#include "Tools/zpkpack/SourceTexts.h"

namespace zpk_packager {

/// Takes the texts of PO files into the tables of a source.
class TextImport {
public:
    explicit TextImport(const SourceTexts& texts) : m_texts(texts) {}

    /// Reads every file `CODE.po` in `folder`, and looks for anything that speaks against taking it. Throws
    /// `PackagerFailure` with path and line.
    void read(const std::string& folder);

    /// Puts the texts that differ into the tables, all of them or none, and gives the paths of the tables
    /// that have changed, sorted. Throws `PackagerFailure`.
    std::vector<std::string> apply() const;

private:
    /// The new texts of one table.
    struct Table {
        /// Null for one that is not there yet.
        const TableText* before = nullptr;
        std::map<std::string, std::string> texts;
    };

    void readFile(const std::string& path, const std::string& code);
    void take(const std::string& path, const POMessage& message, const SourceTexts::Language& language);
    void checkKey(const std::string& path, const POMessage& message) const;
    static void checkText(const std::string& path, const POMessage& message);
    static std::string edited(const Table& table);
    static void write(const std::string& path, const Table& table);

    const SourceTexts& m_texts;
    /// By their paths, relative to the folder of the languages.
    std::map<std::string, Table> m_tables;
};

}  // namespace zpk_packager
