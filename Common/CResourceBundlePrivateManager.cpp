// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Common/CResourceBundlePrivateManager.h"

#include "Common/CAssertOnLine.h"
#include "Common/CBaseObjectUtil.h"
#include "Common/CLocaleDefine.h"
#include "Common/CPlusUtil.h"
#include "Common/CResourceBundle.h"

namespace varno_zpk {

namespace {

CResourceBundle* bundleOf(CBaseObject* inObject) {
    return DOWN_CAST(CResourceBundle*, inObject);
}

CResourceBundle* findBundleWithPath(const std::vector<CBaseObject*>& inBundles, const char* inPath) {
    for (CBaseObject* object : inBundles) {
        if (bundleOf(object)->GetPath() == inPath) {
            return bundleOf(object);
        }
    }
    return nullptr;
}

}  // namespace

CResourceBundlePrivateManager* CResourceBundlePrivateManager::s_Manager = nullptr;

CResourceBundlePrivateManager::CResourceBundlePrivateManager()
    : m_currentLanguage(CLocaleDefine::BASIC_LANGUAGE), m_alternativeLanguage(CLocaleDefine::BASIC_LANGUAGE) {
    ZPK_ASSERT_ON_LINE(s_Manager == nullptr, 36, "s_Manager==NULL");
    s_Manager = this;
}

CResourceBundlePrivateManager::~CResourceBundlePrivateManager() {
    ZPK_ASSERT_ON_LINE(s_Manager == this, 41, "s_Manager==this");
    // Each bundle takes itself out of the list as it goes.
    CBaseObjectUtil::Destroy(m_loadedBundles);
    s_Manager = nullptr;
}

CResourceBundlePrivateManager* CResourceBundlePrivateManager::GetManager() {
    return s_Manager != nullptr ? s_Manager : new CResourceBundlePrivateManager;
}

CResourceBundle* CResourceBundlePrivateManager::GetResourceBundleWithPath(const char* inPath) {
    CResourceBundle* bundle = FindLoadedBundleWithPath(inPath);
    return bundle != nullptr ? bundle : new CResourceBundle(inPath);
}

CResourceBundle* CResourceBundlePrivateManager::FindLoadedBundleWithPath(const char* inPath) const {
    return findBundleWithPath(m_loadedBundles, inPath);
}

void CResourceBundlePrivateManager::AddDefaultBundlePath(const char* inPath) {
    if (FindDefaultBundleWithPath(inPath) == nullptr) {
        m_defaultBundles.push_back(GetResourceBundleWithPath(inPath));
    }
}

CResourceBundle* CResourceBundlePrivateManager::FindDefaultBundleWithPath(const char* inPath) const {
    return findBundleWithPath(m_defaultBundles, inPath);
}

void CResourceBundlePrivateManager::ClearAllDefaultBundles() {
    m_defaultBundles.clear();
}

std::size_t CResourceBundlePrivateManager::GetDefaultBundleCount() const {
    return m_defaultBundles.size();
}

CResourceBundle* CResourceBundlePrivateManager::GetDefaultBundleAt(std::size_t inIndex) const {
    return bundleOf(m_defaultBundles.at(inIndex));
}

void CResourceBundlePrivateManager::SetCurrentLanguage(const char* inLanguage) {
    if (m_currentLanguage == inLanguage) {
        return;
    }
    m_currentLanguage = inLanguage;
    for (CBaseObject* object : m_loadedBundles) {
        bundleOf(object)->ResetCurrentLanguage();
    }
}

const char* CResourceBundlePrivateManager::GetCurrentLanguage() const {
    return m_currentLanguage.c_str();
}

void CResourceBundlePrivateManager::SetAlternativeLanguage(const char* inLanguage) {
    m_alternativeLanguage = inLanguage;
}

const char* CResourceBundlePrivateManager::GetAlternativeLanguage() const {
    return m_alternativeLanguage.c_str();
}

void CResourceBundlePrivateManager::AddBundle(CResourceBundle* inBundle) {
    m_loadedBundles.push_back(inBundle);
}

void CResourceBundlePrivateManager::RemoveBundle(CResourceBundle* inBundle) {
    CBaseObjectUtil::RemoveObject(m_loadedBundles, inBundle);
}

const char* CResourceBundlePrivateManager::GetLocalizedStringForKeyFromTable(const char* inKey,
                                                                             const char* inTable) const {
    for (std::size_t index = m_defaultBundles.size(); index-- > 0;) {
        const char* text = GetDefaultBundleAt(index)->GetLocalizedStringForKeyFromTable(inKey, inTable);
        if (text != inKey) {
            return text;
        }
    }
    return inKey;
}

}  // namespace varno_zpk
