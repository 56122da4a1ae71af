// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/Check/TablesCheck.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "Base/ZPKPath.h"
#include "Common/ZPKCoreStringDefine.h"
#include "Tools/zpkpack/Check/LanguagesCheck.h"

using namespace varno_zpk;

namespace zpk_packager {

namespace {

constexpr std::string_view kNoBreakSpace = "\u00A0";

constexpr std::array<std::string_view, 14> kQuotationMarks = {"\"", "'", "“", "”",  "„",  "‘",  "’",
                                                              "‚",  "«", "»", "「", "」", "『", "』"};

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

}  // namespace

void TablesCheck::run() {
    const FolderTables common(m_folder, m_findings);
    checkPlaceholder(common);
    checkButton(common);
    for (const std::string& language : LanguagesCheck::folders(m_folder)) {
        checkLanguage(ZPKPath::join(m_folder, language), common);
    }
}

void TablesCheck::checkLanguage(const std::string& folder, const FolderTables& common) {
    const FolderTables tables(folder, m_findings);
    if (tables.isEmpty() && common.isEmpty()) {
        m_findings.add("table-missing", folder,
                       "it holds no readable " + ZPKPath::lastComponent(FolderTables::defaultTable(folder)));
        return;
    }
    if (!tables.isEmpty()) {
        checkTexts(tables, common);
        checkPlaceholder(tables);
        checkButton(tables);
    }
}

void TablesCheck::checkTexts(const FolderTables& tables, const FolderTables& common) {
    for (const std::string& key : TableText::knownKeys()) {
        if (tables.find(key).entry == nullptr && common.find(key).entry == nullptr) {
            m_findings.add("key-missing", tables.tables().back().path(),
                           "there is no entry for \"" + key + "\"");
        }
    }
}

void TablesCheck::checkPlaceholder(const FolderTables& tables) {
    const auto [table, entry] = tables.find(ZPKSTRING_UPDATE_FAILURE);
    if (entry == nullptr) {
        return;
    }
    const std::size_t placeholders = FolderTables::placeholdersIn(entry->text);
    if (placeholders != 1) {
        m_findings.add("placeholder", table->path(),
                       "\"%s\" is in the text of \"" + std::string(ZPKSTRING_UPDATE_FAILURE) + "\" " +
                           std::to_string(placeholders) + " times, and must be there once",
                       entry->place);
    }
}

void TablesCheck::checkButton(const FolderTables& tables) {
    const auto [table, message] = tables.find(ZPKSTRING_DISCCHECK_MESSAGE);
    const TableText::Entry* const button = tables.find(ZPKSTRING_DISCCHECK_START).entry;
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
