// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <vector>

#include "Common/CNonCopyableObject.h"

namespace varno_zpk {

class CResourceBundleStringTable;

/// The string tables of one folder of a bundle: that of a language, or the bundle folder itself.
/// Each table is loaded when it is first needed and kept.
class CResourceBundleLanguageData : public CNonCopyableObject {
public:
    static const char* const DEFAULT_TABLE_NAME;
    /// Searched before the default table.
    static const char* const DEFAULT_PLATFORM_TABLE_NAME;

    /// `inLanguage` is empty for the bundle folder itself.
    CResourceBundleLanguageData(const std::string& inFolder, const char* inLanguage);
    ~CResourceBundleLanguageData() override;

    const std::string& GetLanguage() const { return m_language; }

    /// The text of the key from the named table and no other, or, when `inTable` is null, from the
    /// platform table, else the default table. Null when there is none.
    const char* GetStringForKeyFromTable(const char* inKey, const char* inTable);

    /// The table of the name, loaded if need be.
    CResourceBundleStringTable* GetTableNamed(const char* inName);

    /// The table of the name if it is loaded, else null.
    CResourceBundleStringTable* FindTableNamed(const char* inName) const;

private:
    std::string m_folder;
    std::string m_language;
    // Shortcuts into the list of tables, each null until it is first needed.
    CResourceBundleStringTable* m_defaultTable = nullptr;
    CResourceBundleStringTable* m_platformTable = nullptr;
    CResourceBundleStringTable* m_lastNamedTable = nullptr;
    /// Owned `CResourceBundleStringTable`s, in order of first use.
    std::vector<CBaseObject*> m_tables;
};

}  // namespace varno_zpk
