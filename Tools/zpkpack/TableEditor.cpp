// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/TableEditor.h"

#include <algorithm>

#include "Tools/zpkpack/QuotedText.h"

namespace zpk_packager {

namespace {

/// The comment or the blanks at the start of a value; empty where a piece of the text stands.
std::string_view keptPiece(std::string_view value) {
    if (value.starts_with("//")) {
        return value.substr(0, value.find_first_of("\r\n"));
    }
    if (value.starts_with("/*")) {
        const std::size_t end = value.find("*/", 2);
        return value.substr(0, end == std::string_view::npos ? end : end + 2);
    }
    return value.substr(0, std::min(value.find_first_not_of(" \t\r\n"), value.size()));
}

/// The length of the quoted or plain piece of the text at the start of a value.
std::size_t textLength(std::string_view value) {
    const bool isQuoted = value.front() == '"';
    std::size_t at = isQuoted ? 1 : 0;
    while (at < value.size()) {
        if (value[at] == '\\') {
            at += 2;
        } else if (isQuoted && value[at] == '"') {
            return at + 1;
        } else if (!isQuoted && at > 0 &&
                   std::string_view(" \t\r\n\"/").find(value[at]) != std::string_view::npos) {
            return at;
        } else {
            ++at;
        }
    }
    return value.size();
}

}  // namespace

void TableEditor::replace(const TableText::Entry& entry, const std::string& text) {
    const std::string_view value =
        std::string_view(m_bytes).substr(entry.valueBegin, entry.valueEnd - entry.valueBegin);
    m_changes.push_back({entry.valueBegin, entry.valueEnd, withText(value, QuotedText::of(text))});
}

void TableEditor::add(const std::string& key, const std::string& text) {
    m_added += QuotedText::of(key) + " = " + QuotedText::of(text) + ";\n";
}

std::string TableEditor::result() const {
    std::vector<Change> changes = m_changes;
    std::sort(changes.begin(), changes.end(),
              [](const Change& one, const Change& other) { return one.begin > other.begin; });
    std::string bytes = m_bytes;
    for (const Change& change : changes) {
        bytes.replace(change.begin, change.end - change.begin, change.value);
    }
    if (!m_added.empty() && !bytes.empty() && bytes.back() != '\n') {
        bytes += '\n';
    }
    return bytes + m_added;
}

/// The new text stands where the first piece of the old one stood.
std::string TableEditor::withText(std::string_view value, const std::string& quoted) {
    std::string result;
    bool isPut = false;
    while (!value.empty()) {
        const std::string_view kept = keptPiece(value);
        result += kept;
        value.remove_prefix(kept.size());
        if (kept.empty()) {
            result += isPut ? "" : quoted;
            isPut = true;
            value.remove_prefix(textLength(value));
        }
    }
    return isPut ? result : result + quoted;
}

}  // namespace zpk_packager
