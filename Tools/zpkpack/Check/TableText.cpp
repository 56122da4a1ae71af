// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/Check/TableText.h"

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

#include "Base/ZPKNearestName.h"
#include "Base/ZPKUnicode.h"
#include "Common/CResourceBundleStringTableParser.h"
#include "Common/ZPKCoreStringDefine.h"
#include "Tools/zpkpack/Check/CheckedFile.h"

using namespace varno_zpk;

namespace zpk_packager {

const std::set<std::string>& TableText::knownKeys() {
    static const std::set<std::string> kKeys(ZPKSTRING_KEYS.begin(), ZPKSTRING_KEYS.end());
    return kKeys;
}

std::optional<TableText> TableText::read(const std::string& path, FindingList& findings) {
    std::optional<std::string> bytes = CheckedFile::read(path, findings);
    if (!bytes) {
        return std::nullopt;
    }
    TableText table(path, std::move(*bytes), findings);
    table.checkEncoding();
    table.parse();
    return table;
}

TableText::TableText(std::string path, std::string bytes, FindingList& findings)
    : m_path(std::move(path)), m_text(std::move(bytes)), m_findings(&findings) {}

const TableText::Entry* TableText::entry(const std::string& key) const {
    const auto found = m_entries.find(key);
    return found == m_entries.end() ? nullptr : &found->second;
}

void TableText::parse() {
    if (CResourceBundleStringTableParser().Parse(m_path.c_str(), *this) != 0) {
        m_findings->add("unreadable", m_path, "it cannot be read to its end");
    }
}

void TableText::checkEncoding() {
    const std::size_t length = ZPKUnicode::utf8Length(m_text.bytes());
    if (length != m_text.bytes().size()) {
        m_findings->add("table-encoding", m_path, "the bytes from here on are no UTF-8",
                        m_text.placeOf(length));
    }
}

void TableText::OnEntry(const std::string& key, const std::string& value, const EntryPlace& entry) {
    const std::string name = key.c_str();  // as far as the launcher takes it
    const TextPlace place = m_text.placeOf(std::min(entry.key, m_text.bytes().size()));
    if (knownKeys().count(name) == 0) {
        m_unknownKeys.insert(name);
        reportUnknown(name, place);
        return;
    }
    const auto [before, isNew] =
        m_entries.try_emplace(name, Entry{value.c_str(), place, entry.value, entry.end});
    if (!isNew) {
        m_findings->add("key-doubled", m_path,
                        "\"" + name + "\" is in line " + std::to_string(before->second.place.line) + ", too",
                        place);
    }
    if (value.find('$') != std::string::npos) {
        m_findings->add("dollar", m_path, "the text of \"" + name + "\" holds a \"$\"", place);
    }
}

void TableText::reportUnknown(const std::string& key, TextPlace place) {
    if (!m_findings->keepsAnother("key-unknown")) {
        m_findings->add("key-unknown", m_path, "");
        return;
    }
    std::vector<std::string_view> keys(knownKeys().begin(), knownKeys().end());
    const std::string_view near = ZPKNearestName::among(keys, key);
    const std::string advice = near.empty() ? "" : "; \"" + std::string(near) + "\" is known";
    m_findings->add("key-unknown", m_path, "nothing asks for the key \"" + key + "\"" + advice, place);
}

void TableText::OnFault(const char* message, std::size_t offset) {
    m_findings->add("table-syntax", m_path, message, m_text.placeOf(std::min(offset, m_text.bytes().size())));
}

}  // namespace zpk_packager
