// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Common/CResourceBundle.h"

#include <cassert>

#include "Common/CBaseObjectUtil.h"
#include "Common/CFileManager.h"
#include "Common/CPlusUtil.h"
#include "Common/CResourceBundleLanguageData.h"
#include "Common/CResourceBundlePrivateManager.h"
#include "Platform/ZPKFileManager.h"

namespace varno_zpk {

CResourceBundle* CResourceBundle::GetResourceBundleWithPath(const char* inPath) {
    return CResourceBundlePrivateManager::GetManager()->GetResourceBundleWithPath(inPath);
}

void CResourceBundle::AddDefaultBundlePath(const char* inPath) {
    CResourceBundlePrivateManager::GetManager()->AddDefaultBundlePath(inPath);
}

void CResourceBundle::ClearAllDefaultBundles() {
    CResourceBundlePrivateManager::GetManager()->ClearAllDefaultBundles();
}

std::size_t CResourceBundle::GetDefaultBundleCount() {
    return CResourceBundlePrivateManager::GetManager()->GetDefaultBundleCount();
}

CResourceBundle* CResourceBundle::GetDefaultBundleAt(std::size_t inIndex) {
    return CResourceBundlePrivateManager::GetManager()->GetDefaultBundleAt(inIndex);
}

void CResourceBundle::SetCurrentLanguage(const char* inLanguage) {
    CResourceBundlePrivateManager::GetManager()->SetCurrentLanguage(inLanguage);
}

const char* CResourceBundle::GetCurrentLanguage() {
    return CResourceBundlePrivateManager::GetManager()->GetCurrentLanguage();
}

void CResourceBundle::SetAlternativeLanguage(const char* inLanguage) {
    CResourceBundlePrivateManager::GetManager()->SetAlternativeLanguage(inLanguage);
}

const char* CResourceBundle::GetAlternativeLanguage() {
    return CResourceBundlePrivateManager::GetManager()->GetAlternativeLanguage();
}

const char* CResourceBundle::GetLocalizedString(const char* inKey) {
    return GetLocalizedString(inKey, nullptr);
}

const char* CResourceBundle::GetLocalizedString(const char* inKey, const char* inTable) {
    return CResourceBundlePrivateManager::GetManager()->GetLocalizedStringForKeyFromTable(inKey, inTable);
}

const char* CResourceBundle::GetLocalizedString(const char* inKey, const char* inTable,
                                                CResourceBundle* inBundle) {
    assert(inBundle != nullptr);
    return inBundle->GetLocalizedStringForKeyFromTable(inKey, inTable);
}

CResourceBundle::CResourceBundle(const char* inPath) : m_path(inPath) {
    CResourceBundlePrivateManager::GetManager()->AddBundle(this);
}

CResourceBundle::~CResourceBundle() {
    CResourceBundlePrivateManager::GetManager()->RemoveBundle(this);
    CBaseObjectUtil::Destroy(m_languageData);
}

const char* CResourceBundle::GetLocalizedStringForKeyFromTable(const char* inKey, const char* inTable) {
    if (!m_languageDataResolved) {
        ResolveLanguageData();
    }
    if (m_resolvedLanguageData != nullptr) {
        if (const char* text = m_resolvedLanguageData->GetStringForKeyFromTable(inKey, inTable)) {
            return text;
        }
    }
    if (m_rootLanguageData == nullptr) {
        m_rootLanguageData = std::make_unique<CResourceBundleLanguageData>(m_path, "");
    }
    if (const char* text = m_rootLanguageData->GetStringForKeyFromTable(inKey, inTable)) {
        return text;
    }
    return inKey;
}

/// Chooses the folder of the lookups to come. The alternative language stands in for a missing
/// folder only, never for a single key that the folder lacks.
void CResourceBundle::ResolveLanguageData() {
    if (HasLanguageData(GetCurrentLanguage())) {
        m_resolvedLanguageData = GetLanguageDataWithLanguage(GetCurrentLanguage());
    } else if (HasLanguageData(GetAlternativeLanguage())) {
        m_resolvedLanguageData = GetLanguageDataWithLanguage(GetAlternativeLanguage());
    } else {
        m_resolvedLanguageData = nullptr;
    }
    m_languageDataResolved = true;
}

bool CResourceBundle::HasLanguageData(const char* inLanguage) const {
    return inLanguage != nullptr && *inLanguage != '\0' &&
           ZPKFileManager::isFolder(m_path + "/" + inLanguage);
}

CResourceBundleLanguageData* CResourceBundle::GetLanguageDataWithLanguage(const char* inLanguage) {
    if (CResourceBundleLanguageData* data = FindLanguageDataWithLanguage(inLanguage)) {
        return data;
    }
    auto data = std::make_unique<CResourceBundleLanguageData>(m_path + "/" + inLanguage, inLanguage);
    m_languageData.push_back(data.get());
    return data.release();
}

CResourceBundleLanguageData* CResourceBundle::FindLanguageDataWithLanguage(const char* inLanguage) const {
    for (CBaseObject* object : m_languageData) {
        CResourceBundleLanguageData* data = DOWN_CAST(CResourceBundleLanguageData*, object);
        if (data->GetLanguage() == inLanguage) {
            return data;
        }
    }
    return nullptr;
}

std::size_t CResourceBundle::GetLanguageCount() {
    SetupLanguages();
    return m_languages.size();
}

const char* CResourceBundle::GetLanguageAt(std::size_t inIndex) {
    SetupLanguages();
    return m_languages.at(inIndex).c_str();
}

void CResourceBundle::ResetCurrentLanguage() {
    m_languageDataResolved = false;
}

void CResourceBundle::SetupLanguages() {
    if (m_languagesSetUp) {
        return;
    }
    std::vector<std::string> entries;
    CFileManager::GetManager()->GetFolderContents(m_path.c_str(), entries);
    std::vector<std::string> languages;
    for (const std::string& entry : entries) {
        const std::string folder = m_path + "/" + entry;
        if (CFileManager::GetManager()->IsFolder(folder.c_str()) &&
            ZPKFileManager::fileExists(folder + "/" + CResourceBundleLanguageData::DEFAULT_TABLE_NAME)) {
            languages.push_back(entry);
        }
    }
    m_languages.swap(languages);
    m_languagesSetUp = true;
}

}  // namespace varno_zpk
