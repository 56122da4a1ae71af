// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/Check/FolderTables.h"

#include <optional>
#include <string_view>
#include <utility>

#include "Base/ZPKPath.h"
#include "Common/CResourceBundleLanguageData.h"

using varno_zpk::CResourceBundleLanguageData;

namespace zpk_packager {

namespace {

constexpr std::string_view kPlaceholder = "%s";

}  // namespace

FolderTables::FolderTables(const std::string& folder, FindingList& findings) {
    for (const char* const name : {CResourceBundleLanguageData::DEFAULT_PLATFORM_TABLE_NAME,
                                   CResourceBundleLanguageData::DEFAULT_TABLE_NAME}) {
        if (std::optional<TableText> table = TableText::read(ZPKPath::join(folder, name), findings)) {
            m_tables.push_back(std::move(*table));
        }
    }
}

FolderTables::Found FolderTables::find(const std::string& key) const {
    for (const TableText& table : m_tables) {
        if (const TableText::Entry* const entry = table.entry(key)) {
            return {&table, entry};
        }
    }
    return {};
}

std::string FolderTables::defaultTable(const std::string& folder) {
    return ZPKPath::join(folder, CResourceBundleLanguageData::DEFAULT_TABLE_NAME);
}

std::size_t FolderTables::placeholdersIn(const std::string& text) {
    std::size_t count = 0;
    for (std::size_t at = text.find(kPlaceholder); at != std::string::npos;
         at = text.find(kPlaceholder, at + kPlaceholder.size())) {
        ++count;
    }
    return count;
}

}  // namespace zpk_packager
