// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/Check/TablesCheck.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>
#include <utility>

#include "Base/ZPKPath.h"
#include "Common/ZPKCoreStringDefine.h"
#include "Tools/zpkpack/Check/LanguagesCheck.h"

using namespace varno_zpk;

namespace zpk_packager {

namespace {

constexpr const char* kPlatformTable = "ZPKPlatformStringTable.def";
constexpr const char* kDefaultTable = "ZPKStringTable.def";
constexpr std::string_view kPlaceholder = "%s";
constexpr std::string_view kNoBreakSpace = "\u00A0";

constexpr std::array<std::string_view, 14> kQuotationMarks = {"\"", "'", "“", "”",  "„",  "‘",  "’",
                                                              "‚",  "«", "»", "「", "」", "『", "』"};

std::size_t count(std::string_view text, std::string_view piece) {
    std::size_t count = 0;
    for (std::size_t at = text.find(piece); at != std::string_view::npos;
         at = text.find(piece, at + piece.size())) {
        ++count;
    }
    return count;
}

bool endsInMark(std::string_view text) {
    if (text.ends_with(kNoBreakSpace)) {
        text.remove_suffix(kNoBreakSpace.size());
    }
    return std::any_of(kQuotationMarks.begin(), kQuotationMarks.end(),
                       [text](std::string_view mark) { return text.ends_with(mark); });
}

bool beginsWithMark(std::string_view text) {
    if (text.starts_with(kNoBreakSpace)) {
        text.remove_prefix(kNoBreakSpace.size());
    }
    return std::any_of(kQuotationMarks.begin(), kQuotationMarks.end(),
                       [text](std::string_view mark) { return text.starts_with(mark); });
}

bool quotes(std::string_view text, std::string_view name) {
    for (std::size_t at = text.find(name); at != std::string_view::npos; at = text.find(name, at + 1)) {
        if (endsInMark(text.substr(0, at)) && beginsWithMark(text.substr(at + name.size()))) {
            return true;
        }
    }
    return false;
}

/// Whether something stands between quotation marks; an apostrophe is none.
bool quotesAnything(std::string_view text) {
    return std::any_of(kQuotationMarks.begin(), kQuotationMarks.end(), [text](std::string_view mark) {
        return mark != "'" && mark != "’" && text.find(mark) != std::string_view::npos;
    });
}

/// Where the launcher finds the key; null where it does not.
std::pair<const TableText*, const TableText::Entry*> find(const std::vector<TableText>& tables,
                                                          const char* key) {
    for (const TableText& table : tables) {
        if (const TableText::Entry* const entry = table.entry(key)) {
            return {&table, entry};
        }
    }
    return {nullptr, nullptr};
}

}  // namespace

void TablesCheck::run() {
    const Tables common = tablesIn(m_folder);
    checkPlaceholder(common);
    checkButton(common);
    for (const std::string& language : LanguagesCheck::folders(m_folder)) {
        checkLanguage(ZPKPath::join(m_folder, language), common);
    }
}

TablesCheck::Tables TablesCheck::tablesIn(const std::string& folder) {
    Tables tables;
    for (const char* const name : {kPlatformTable, kDefaultTable}) {
        if (std::optional<TableText> table = TableText::read(ZPKPath::join(folder, name), m_findings)) {
            tables.push_back(std::move(*table));
        }
    }
    return tables;
}

void TablesCheck::checkLanguage(const std::string& folder, const Tables& common) {
    const Tables tables = tablesIn(folder);
    if (tables.empty() && common.empty()) {
        m_findings.add("table-missing", folder, std::string("it holds no readable ") + kDefaultTable);
        return;
    }
    if (!tables.empty()) {
        checkTexts(tables, common);
        checkPlaceholder(tables);
        checkButton(tables);
    }
}

void TablesCheck::checkTexts(const Tables& tables, const Tables& common) {
    for (const std::string& key : TableText::knownKeys()) {
        const char* const name = key.c_str();
        if (find(tables, name).second == nullptr && find(common, name).second == nullptr) {
            m_findings.add("key-missing", tables.back().path(), "there is no entry for \"" + key + "\"");
        }
    }
}

void TablesCheck::checkPlaceholder(const Tables& tables) {
    const auto [table, entry] = find(tables, ZPKSTRING_UPDATE_FAILURE);
    if (entry == nullptr) {
        return;
    }
    const std::size_t placeholders = count(entry->text, kPlaceholder);
    if (placeholders != 1) {
        m_findings.add("placeholder", table->path(),
                       "\"%s\" is in the text of \"" + std::string(ZPKSTRING_UPDATE_FAILURE) + "\" " +
                           std::to_string(placeholders) + " times, and must be there once",
                       entry->place);
    }
}

void TablesCheck::checkButton(const Tables& tables) {
    const auto [table, message] = find(tables, ZPKSTRING_DISCCHECK_MESSAGE);
    const TableText::Entry* const button = find(tables, ZPKSTRING_DISCCHECK_START).second;
    if (message == nullptr || button == nullptr || button->text.empty()) {
        return;
    }
    if (quotesAnything(message->text) && !quotes(message->text, button->text)) {
        m_findings.add("button-name", table->path(),
                       "\"" + std::string(ZPKSTRING_DISCCHECK_MESSAGE) + "\" does not quote the button \"" +
                           button->text + "\"",
                       message->place);
    }
}

}  // namespace zpk_packager
