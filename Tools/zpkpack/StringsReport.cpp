// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/StringsReport.h"

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>
#include <set>
#include <vector>

#include "Base/ZPKTerminalText.h"
#include "Common/ZPKCoreStringDefine.h"

using namespace varno_zpk;

namespace zpk_packager {

namespace {

using Object = nlohmann::ordered_json;

struct Row {
    std::string code;
    std::vector<std::string> present;
    std::vector<std::string> missing;
    std::set<std::string> unused;
    std::vector<std::string> same;
    std::size_t placeholders = 0;
};

Row rowOf(const SourceTexts& texts, const SourceTexts::Language& language) {
    Row row{language.code, {}, {}, {}, {}, 0};
    for (const char* const key : ZPKSTRING_KEYS) {
        const FolderTables::Found found = texts.find(language, key);
        (found.entry == nullptr ? row.missing : row.present).emplace_back(key);
        if (found.entry != nullptr && &language != &texts.reference() &&
            found.entry->text == texts.original(key)) {
            row.same.emplace_back(key);
        }
    }
    for (const TableText& table : language.tables.tables()) {
        row.unused.insert(table.unknownKeys().begin(), table.unknownKeys().end());
    }
    const FolderTables::Found failure = texts.find(language, ZPKSTRING_UPDATE_FAILURE);
    row.placeholders = failure.entry == nullptr ? 0 : FolderTables::placeholdersIn(failure.entry->text);
    return row;
}

std::vector<Row> rowsOf(const SourceTexts& texts) {
    std::vector<Row> rows;
    for (const SourceTexts::Language& language : texts.languages()) {
        rows.push_back(rowOf(texts, language));
    }
    return rows;
}

std::string rightAligned(const std::string& text, std::size_t width) {
    return std::string(width - std::min(width, text.size()), ' ') + text;
}

/// The titles and, below them, the numbers of each row; the codes at the end, since they may be of any width.
std::string line(const std::array<std::string, 5>& cells, const std::string& code) {
    constexpr std::array<std::size_t, 5> kWidths = {7, 9, 8, 6, 4};
    std::string text;
    for (std::size_t column = 0; column < cells.size(); ++column) {
        text += rightAligned(cells[column], kWidths[column]);
    }
    return text + "  " + ZPKTerminalText::printable(code) + "\n";
}

template <typename Keys>
std::string keyLines(const Row& row, const std::string& word, const Keys& keys) {
    std::string lines;
    for (const std::string& key : keys) {
        lines +=
            ZPKTerminalText::printable(row.code) + ": " + word + " " + ZPKTerminalText::printable(key) + "\n";
    }
    return lines;
}

}  // namespace

std::string StringsReport::asText(const SourceTexts& texts) {
    const std::vector<Row> rows = rowsOf(texts);
    std::string table = line({"present", "missing", "unused", "same", "%s"}, "language");
    std::string keys;
    for (const Row& row : rows) {
        const bool isReference = row.code == texts.reference().code;
        table += line({std::to_string(row.present.size()), std::to_string(row.missing.size()),
                       std::to_string(row.unused.size()), isReference ? "-" : std::to_string(row.same.size()),
                       std::to_string(row.placeholders)},
                      row.code);
        keys += keyLines(row, "missing", row.missing) + keyLines(row, "unused", row.unused) +
                keyLines(row, "same as in " + ZPKTerminalText::printable(texts.reference().code), row.same);
    }
    return table + (keys.empty() ? "" : "\n" + keys);
}

std::string StringsReport::asJSON(const SourceTexts& texts) {
    Object languages = Object::array();
    for (const Row& row : rowsOf(texts)) {
        languages.push_back({{"code", row.code},
                             {"present", row.present},
                             {"missing", row.missing},
                             {"unused", row.unused},
                             {"sameAsReference", row.same},
                             {"placeholders", row.placeholders}});
    }
    const Object report = {{"reference", texts.reference().code}, {"languages", languages}};
    // In ASCII alone, so that nothing in a name can turn the text of a terminal around.
    return report.dump(2, ' ', true, Object::error_handler_t::replace) + "\n";
}

}  // namespace zpk_packager
