// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "Common/CNonCopyableObject.h"

namespace varno_zpk {

class CResourceBundleLanguageData;

/// A folder of localized string tables with one sub-folder a language.
///
/// The class-wide operations work on the process-wide set of bundles and on its current and
/// alternative language. No lookup fails: what is missing falls through to the next source, and in
/// the end the caller's key comes back. Main thread only, unguarded.
class CResourceBundle : public CNonCopyableObject {
public:
    /// The loaded bundle with exactly this path, else a new one; either lives until the bundles are
    /// finalized.
    static CResourceBundle* GetResourceBundleWithPath(const char* inPath);

    /// Makes the bundle of the path a default bundle, unless it is one already.
    static void AddDefaultBundlePath(const char* inPath);
    /// Leaves no default bundle; the bundles stay loaded.
    static void ClearAllDefaultBundles();
    static std::size_t GetDefaultBundleCount();
    /// Throws `std::out_of_range` for an index at or past the count.
    static CResourceBundle* GetDefaultBundleAt(std::size_t inIndex);

    /// Makes every bundle choose its language folder again, unless the language is current already.
    static void SetCurrentLanguage(const char* inLanguage);
    /// Valid until the current language changes.
    static const char* GetCurrentLanguage();
    /// The language of those bundles that have no folder for the current one. A bundle that has
    /// chosen its folder keeps it until the current language changes.
    static void SetAlternativeLanguage(const char* inLanguage);
    /// Valid until the alternative language changes.
    static const char* GetAlternativeLanguage();

    /// The text of the key, valid as long as its bundle, or `inKey` itself. The default bundles are
    /// searched, the one added last first. `inTable` null stands for the platform and the default
    /// table.
    static const char* GetLocalizedString(const char* inKey);
    static const char* GetLocalizedString(const char* inKey, const char* inTable);
    /// The same from the one bundle.
    static const char* GetLocalizedString(const char* inKey, const char* inTable, CResourceBundle* inBundle);

    /// Registers the bundle, which the process-wide manager then owns.
    explicit CResourceBundle(const char* inPath);
    ~CResourceBundle() override;

    const std::string& GetPath() const { return m_path; }

    const char* GetLocalizedStringForKeyFromTable(const char* inKey, const char* inTable);

    /// True when the bundle has a folder for the language, with tables or without. False for null
    /// and for an empty code.
    bool HasLanguageData(const char* inLanguage) const;
    CResourceBundleLanguageData* GetLanguageDataWithLanguage(const char* inLanguage);
    /// Null when the language has not been used yet.
    CResourceBundleLanguageData* FindLanguageDataWithLanguage(const char* inLanguage) const;

    /// The languages whose folder holds a default table, in the order of the folder's listing. Read
    /// once.
    std::size_t GetLanguageCount();
    /// Throws `std::out_of_range` for an index at or past the count.
    const char* GetLanguageAt(std::size_t inIndex);

    /// Makes the next lookup choose the language folder again.
    void ResetCurrentLanguage();

private:
    void ResolveLanguageData();
    void SetupLanguages();

    std::string m_path;
    bool m_languageDataResolved = false;
    bool m_languagesSetUp = false;
    /// Owned `CResourceBundleLanguageData`s, in order of first use.
    std::vector<CBaseObject*> m_languageData;
    /// The one in use, or null; only meaningful while `m_languageDataResolved`.
    CResourceBundleLanguageData* m_resolvedLanguageData = nullptr;
    /// The tables of the bundle folder itself, the last source for every language.
    std::unique_ptr<CResourceBundleLanguageData> m_rootLanguageData;
    std::vector<std::string> m_languages;
};

}  // namespace varno_zpk
