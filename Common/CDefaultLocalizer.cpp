// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Common/CDefaultLocalizer.h"

#include <string>

#include "Common/CAssertOnLine.h"
#include "Common/CResourceBundle.h"
#include "Common/CVariableManager.h"

namespace varno_zpk {

namespace {

/// The text of the key in the current language, variables expanded; valid until the next expansion, or
/// as long as the bundles.
const char* lookUpAndExpand(const char* inKey) {
    const char* text = CResourceBundle::GetLocalizedString(inKey);
    return CVariableManager::GetManager()->ExpandAndReturnTempString(text);
}

/// Makes a language current for a stretch of code, however that is left. Both changes make every bundle
/// choose its language folder again; the tables that are loaded stay.
class CurrentLanguageHolder {
public:
    explicit CurrentLanguageHolder(const char* inLanguage)
        : m_remembered(CResourceBundle::GetCurrentLanguage()) {
        CResourceBundle::SetCurrentLanguage(inLanguage);
    }
    ~CurrentLanguageHolder() { CResourceBundle::SetCurrentLanguage(m_remembered.c_str()); }
    CurrentLanguageHolder(const CurrentLanguageHolder&) = delete;
    CurrentLanguageHolder& operator=(const CurrentLanguageHolder&) = delete;

private:
    std::string m_remembered;
};

}  // namespace

CLocalizer* CDefaultLocalizer::GetLocalizer() {
    // The list of singletons, in which the object has put itself, owns it.
    return new CDefaultLocalizer;
}

const char* CDefaultLocalizer::Localize(const char* inKey) const {
    return lookUpAndExpand(inKey);
}

const char* CDefaultLocalizer::Localize(const char* inKey, const char* inLanguage) {
    if (inLanguage == nullptr || *inLanguage == '\0') {
        return inKey;
    }
    // The text lies in a loaded table or in the variable manager, so it outlives the way back.
    const CurrentLanguageHolder holder(inLanguage);
    return lookUpAndExpand(inKey);
}

// The offered languages are those of the bundle's language description, which the localizer does not
// know, so the two list operations stop the program. Nothing in it calls them; the interface has them
// for other localizers. What they return is for the compiler alone.
unsigned long CDefaultLocalizer::GetLocalizeLanguageCount() const {
    ZPK_ASSERT_ON_LINE(false, 63, "0");
    return 0;
}

const char* CDefaultLocalizer::GetLocalizeLanguageAt(unsigned long) const {
    ZPK_ASSERT_ON_LINE(false, 72, "0");
    return nullptr;
}

}  // namespace varno_zpk
