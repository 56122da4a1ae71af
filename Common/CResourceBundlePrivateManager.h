// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "Common/CAutoFinalizeObject.h"

namespace varno_zpk {

class CResourceBundle;

/// The one holder of all resource bundles and of the user-interface languages, made on first use.
/// `CResourceBundle` is the door to it; the operations of the same names are described there.
class CResourceBundlePrivateManager : public CAutoFinalizeObject {
public:
    static CResourceBundlePrivateManager* GetManager();

    /// Asserts that there is no manager yet.
    CResourceBundlePrivateManager();
    /// Asserts that this is the manager, and destroys every bundle.
    ~CResourceBundlePrivateManager() override;

    CResourceBundle* GetResourceBundleWithPath(const char* inPath);
    /// Null when no bundle has this path.
    CResourceBundle* FindLoadedBundleWithPath(const char* inPath) const;

    void AddDefaultBundlePath(const char* inPath);
    /// Null when no default bundle has this path.
    CResourceBundle* FindDefaultBundleWithPath(const char* inPath) const;
    void ClearAllDefaultBundles();
    std::size_t GetDefaultBundleCount() const;
    CResourceBundle* GetDefaultBundleAt(std::size_t inIndex) const;

    void SetCurrentLanguage(const char* inLanguage);
    const char* GetCurrentLanguage() const;
    void SetAlternativeLanguage(const char* inLanguage);
    const char* GetAlternativeLanguage() const;

    /// Takes the bundle over.
    void AddBundle(CResourceBundle* inBundle);
    /// Gives the bundle up, without destroying it.
    void RemoveBundle(CResourceBundle* inBundle);

    const char* GetLocalizedStringForKeyFromTable(const char* inKey, const char* inTable) const;

private:
    static CResourceBundlePrivateManager* s_Manager;

    std::string m_currentLanguage;
    std::string m_alternativeLanguage;
    /// `CResourceBundle`s in order of addition, not owned.
    std::vector<CBaseObject*> m_defaultBundles;
    /// Every `CResourceBundle` in existence, owned.
    std::vector<CBaseObject*> m_loadedBundles;
};

}  // namespace varno_zpk
