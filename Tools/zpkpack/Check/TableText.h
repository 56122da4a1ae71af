// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <set>
#include <string>

#include "Common/IStringTableListener.h"
#include "Tools/zpkpack/Check/FindingList.h"
#include "Tools/zpkpack/Check/SourceText.h"

namespace zpk_packager {

/// A string table as the launcher's own reader sees it; what is wrong with it by itself is reported while it
/// is read.
class TableText : private varno_zpk::IStringTableListener {
public:
    /// What a table says for one key that is known.
    struct Entry {
        std::string text;
        TextPlace place;
        /// From behind the `=` to the `;`, in bytes from the start of the file.
        std::size_t valueBegin;
        std::size_t valueEnd;
    };

    /// Nothing where there is no table; nothing and a finding where it cannot be read.
    static std::optional<TableText> read(const std::string& path, FindingList& findings);

    const std::string& path() const { return m_path; }
    const std::string& bytes() const { return m_text.bytes(); }

    /// Null when the table has no such key. A key that is in it twice has its first text.
    const Entry* entry(const std::string& key) const;

    /// The keys in it that nothing asks for, sorted.
    const std::set<std::string>& unknownKeys() const { return m_unknownKeys; }

    /// The keys that the launcher asks for.
    static const std::set<std::string>& knownKeys();

private:
    TableText(std::string path, std::string bytes, FindingList& findings);

    void OnEntry(const std::string& key, const std::string& value, const EntryPlace& place) override;
    void OnFault(const char* message, std::size_t offset) override;
    void parse();
    void checkEncoding();
    void reportUnknown(const std::string& key, TextPlace place);

    std::string m_path;
    SourceText m_text;
    FindingList* m_findings;
    std::map<std::string, Entry> m_entries;
    std::set<std::string> m_unknownKeys;
};

}  // namespace zpk_packager
