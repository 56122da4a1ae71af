// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Common/CResourceBundleLanguageData.h"

#include <memory>

#include "Common/CBaseObjectUtil.h"
#include "Common/CPlusUtil.h"
#include "Common/CResourceBundleStringTable.h"

namespace varno_zpk {

const char* const CResourceBundleLanguageData::DEFAULT_TABLE_NAME = "ZPKStringTable.def";
const char* const CResourceBundleLanguageData::DEFAULT_PLATFORM_TABLE_NAME = "ZPKPlatformStringTable.def";

CResourceBundleLanguageData::CResourceBundleLanguageData(const std::string& inFolder, const char* inLanguage)
    : m_folder(inFolder), m_language(inLanguage) {}

CResourceBundleLanguageData::~CResourceBundleLanguageData() {
    CBaseObjectUtil::Destroy(m_tables);
}

const char* CResourceBundleLanguageData::GetStringForKeyFromTable(const char* inKey, const char* inTable) {
    if (inTable != nullptr) {
        if (m_lastNamedTable == nullptr || m_lastNamedTable->GetName() != inTable) {
            m_lastNamedTable = GetTableNamed(inTable);
        }
        return m_lastNamedTable->GetStringForKey(inKey);
    }

    if (m_platformTable == nullptr) {
        m_platformTable = GetTableNamed(DEFAULT_PLATFORM_TABLE_NAME);
    }
    if (const char* text = m_platformTable->GetStringForKey(inKey)) {
        return text;
    }
    if (m_defaultTable == nullptr) {
        m_defaultTable = GetTableNamed(DEFAULT_TABLE_NAME);
    }
    return m_defaultTable->GetStringForKey(inKey);
}

CResourceBundleStringTable* CResourceBundleLanguageData::GetTableNamed(const char* inName) {
    if (CResourceBundleStringTable* table = FindTableNamed(inName)) {
        return table;
    }
    auto table = std::make_unique<CResourceBundleStringTable>(m_folder + "/" + inName, inName);
    m_tables.push_back(table.get());
    return table.release();
}

CResourceBundleStringTable* CResourceBundleLanguageData::FindTableNamed(const char* inName) const {
    for (CBaseObject* object : m_tables) {
        CResourceBundleStringTable* table = DOWN_CAST(CResourceBundleStringTable*, object);
        if (table->GetName() == inName) {
            return table;
        }
    }
    return nullptr;
}

}  // namespace varno_zpk
