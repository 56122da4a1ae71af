// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Common/CLocalizer.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <string>
#include <type_traits>
#include <utility>

#include "Common/CDefaultLocalizer.h"
#include "Common/CLocaleDefine.h"
#include "Common/CLocalizerUtil.h"
#include "Common/CResourceBundle.h"
#include "Common/CResourceBundlePrivateManager.h"
#include "Common/CVariableManager.h"
#include "Common/CVariableValueFinder.h"
#include "Common/ZPKCoreStringDefine.h"
#include "Tests/Support/CapturedStreams.h"
#include "Tests/Support/TemporaryFolder.h"
#include "Tests/Support/VirtualSlot.h"

namespace {

using varno_zpk::CAutoFinalizeObject;
using varno_zpk::CDefaultLocalizer;
using varno_zpk::CLocalizer;
using varno_zpk::CLocalizerBase;
using varno_zpk::CLocalizerUtil;
using varno_zpk::CResourceBundle;
using varno_zpk::CResourceBundlePrivateManager;
using varno_zpk::CVariableManager;
using varno_zpk::CVariableValueFinder;
using varno_zpk::ILocalizer;
using zpk_test::captureStreams;
using zpk_test::TemporaryFolder;
using zpk_test::virtualSlot;
using zpk_test::writeFile;

/// Knows the one variable $Name$.
class NameFinder : public CVariableValueFinder {
public:
    NameFinder() { SetDefaultFinder(this); }
    const char* FindValue(const std::string& name, std::string&) override {
        return name == "$Name$" ? "Zephyr" : nullptr;
    }
};

/// English and Japanese tables, the bundle of the test's own, and the localizer on top of them.
class LocalizerTest : public testing::Test {
protected:
    LocalizerTest() {
        writeFile(m_folder / "en/ZPKStringTable.def",
                  "ZPKString_OK=OK;hello=\"Hello $Name$!\";price=\"5 $ only\";\"$Name$\"=found;");
        writeFile(m_folder / "ja/ZPKStringTable.def", "ZPKString_OK=\"了解\";hello=\"$Name$ さん\";");
        CResourceBundle::AddDefaultBundlePath(m_folder.path().c_str());
    }
    ~LocalizerTest() override { delete CResourceBundlePrivateManager::GetManager(); }

    static std::string text(const char* key) { return CLocalizer::GetLocalizer()->Localize(key); }
    static std::string text(const char* key, const char* language) {
        return CLocalizer::GetLocalizer()->Localize(key, language);
    }

    const TemporaryFolder m_folder;
};

TEST_F(LocalizerTest, GivesTheTextOfTheCurrentLanguage) {
    EXPECT_EQ(text("ZPKString_OK"), "OK");
    CResourceBundle::SetCurrentLanguage("ja");
    EXPECT_EQ(text("ZPKString_OK"), "了解");
}

TEST_F(LocalizerTest, MissingKeyStandsForItself) {
    const char* key = "ZPKString_Missing";
    EXPECT_EQ(CLocalizer::GetLocalizer()->Localize(key), key);
    CResourceBundle::ClearAllDefaultBundles();
    EXPECT_EQ(text("ZPKString_OK"), "ZPKString_OK");
}

TEST_F(LocalizerTest, WithoutALanguageTheKeyIsNeitherLookedUpNorExpanded) {
    const NameFinder finder;
    for (const char* key : {"ZPKString_OK", "$Name$", "hello"}) {
        EXPECT_EQ(CLocalizer::GetLocalizer()->Localize(key, ""), key);
        EXPECT_EQ(CLocalizer::GetLocalizer()->Localize(key, nullptr), key);
    }
}

TEST_F(LocalizerTest, LanguageIsUsedForTheOneText) {
    EXPECT_EQ(text("ZPKString_OK", "ja"), "了解");
    EXPECT_STREQ(CResourceBundle::GetCurrentLanguage(), "en");
    EXPECT_EQ(text("ZPKString_OK"), "OK");
    EXPECT_EQ(text("ZPKString_OK", CResourceBundle::GetCurrentLanguage()), "OK");
    EXPECT_EQ(text("ZPKString_Missing", "ja"), "ZPKString_Missing");
    EXPECT_STREQ(CResourceBundle::GetCurrentLanguage(), "en");
}

TEST_F(LocalizerTest, LanguageWithoutAFolderGivesTheAlternativeLanguage) {
    CResourceBundle::SetAlternativeLanguage("ja");
    EXPECT_EQ(text("ZPKString_OK", "xx"), "了解");
    EXPECT_EQ(text("ZPKString_OK"), "OK");
}

TEST_F(LocalizerTest, LanguageMakesTheBundlesChooseAgainOnTheWayInAndBack) {
    CResourceBundle::SetCurrentLanguage("fr");
    EXPECT_EQ(text("ZPKString_OK"), "OK") << "from the alternative language";
    writeFile(m_folder / "fr/ZPKStringTable.def", "ZPKString_OK=Bien;");
    EXPECT_EQ(text("ZPKString_OK"), "OK") << "the bundle has chosen";
    EXPECT_EQ(text("ZPKString_OK", "ja"), "了解");
    EXPECT_EQ(text("ZPKString_OK"), "Bien");
}

TEST_F(LocalizerTest, VariablesAreExpanded) {
    const NameFinder finder;
    captureStreams([] {
        EXPECT_EQ(text("hello"), "Hello Zephyr!");
        EXPECT_EQ(text("hello", "ja"), "Zephyr さん");
        EXPECT_EQ(text("price"), "5 $ only");
        EXPECT_EQ(text("no key $Name$"), "no key Zephyr") << "a key without a text is expanded too";
    });
}

TEST_F(LocalizerTest, VariablesWithoutAFinderStayAsTheyAre) {
    EXPECT_EQ(text("hello"), "Hello $Name$!");
}

TEST_F(LocalizerTest, LookupComesBeforeTheExpansion) {
    const NameFinder finder;
    EXPECT_EQ(text("$Name$"), "found");
}

TEST_F(LocalizerTest, ExpandedTextLivesUntilTheNextExpansion) {
    const char* text = CLocalizer::GetLocalizer()->Localize("hello");
    EXPECT_STREQ(text, "Hello $Name$!");
    EXPECT_NE(text, CResourceBundle::GetLocalizedString("hello")) << "the manager's text, not the table's";
    CVariableManager::GetManager()->ExpandAndReturnTempString("$x$");
    EXPECT_STREQ(CLocalizer::GetLocalizer()->Localize("ZPKString_OK"), "OK");
}

TEST_F(LocalizerTest, DefaultLanguageIsTheCurrentOne) {
    EXPECT_STREQ(CLocalizer::GetLocalizer()->GetDefaultLocalizeLanguage(), "en");
    CResourceBundle::SetCurrentLanguage("ja");
    EXPECT_STREQ(CLocalizer::GetLocalizer()->GetDefaultLocalizeLanguage(), "ja");
}

TEST_F(LocalizerTest, ProcessHasOneDefaultLocalizer) {
    ILocalizer* localizer = CLocalizer::GetLocalizer();
    EXPECT_EQ(CLocalizer::GetLocalizer(), localizer);
    EXPECT_NE(dynamic_cast<CDefaultLocalizer*>(localizer), nullptr);
}

TEST_F(LocalizerTest, EveryCallMakesANewDefaultLocalizerObject) {
    ILocalizer* theDefault = CLocalizer::GetLocalizer();
    CLocalizer* one = CDefaultLocalizer::GetLocalizer();
    CLocalizer* two = CDefaultLocalizer::GetLocalizer();
    EXPECT_NE(one, two);
    EXPECT_NE(one, theDefault);
    delete one;
    delete two;
    EXPECT_EQ(CLocalizer::GetLocalizer(), theDefault) << "another object's end leaves the default alone";
}

TEST_F(LocalizerTest, DefaultLocalizerIsMadeAgainAfterItsDestruction) {
    // Only the address can tell the two apart, so something else takes the place of the first.
    CLocalizer* placeholder = CDefaultLocalizer::GetLocalizer();
    delete CLocalizer::GetLocalizer();
    const CLocalizer* const freed = CDefaultLocalizer::GetLocalizer();
    EXPECT_EQ(text("ZPKString_OK"), "OK");
    EXPECT_NE(CLocalizer::GetLocalizer(), freed);
    EXPECT_EQ(CLocalizer::GetLocalizer(), CLocalizer::GetLocalizer());
    delete freed;
    delete placeholder;
}

TEST_F(LocalizerTest, UtilityReplacesAKeyByItsText) {
    std::string text = "ZPKString_OK";
    EXPECT_EQ(&CLocalizerUtil::Localize(CLocalizer::GetLocalizer(), text), &text);
    EXPECT_EQ(text, "OK");
}

TEST_F(LocalizerTest, UtilityLeavesATextThatIsNoKeyAlone) {
    std::string text = "a text that is no key, and too long to be stored in place";
    const std::string copy = text;
    const char* buffer = text.c_str();
    EXPECT_EQ(CLocalizerUtil::Localize(CLocalizer::GetLocalizer(), text), copy);
    EXPECT_EQ(text.c_str(), buffer);
}

TEST_F(LocalizerTest, UtilityExpandsATextThatIsNoKey) {
    const NameFinder finder;
    std::string text = "I am $Name$";
    captureStreams([&] { CLocalizerUtil::Localize(CLocalizer::GetLocalizer(), text); });
    EXPECT_EQ(text, "I am Zephyr");
}

TEST_F(LocalizerTest, LocalizedTextsOutliveTheNextOne) {
    const NameFinder finder;
    captureStreams([] {
        const std::string english = varno_zpk::localized("hello");
        CResourceBundle::SetCurrentLanguage("ja");
        EXPECT_EQ(varno_zpk::localized("hello"), "Zephyr さん");
        EXPECT_EQ(english, "Hello Zephyr!");
    });
    EXPECT_EQ(varno_zpk::localized("ZPKString_Missing"), "ZPKString_Missing");
}

TEST_F(LocalizerTest, FinalizationDestroysTheLocalizer) {
    const auto finalize = [] {
        text("ZPKString_OK", "ja");
        CDefaultLocalizer::GetLocalizer();
        CAutoFinalizeObject::FinalizeAllObjects();
        // The leak checker, where there is one, runs at this exit.
        std::exit(0);
    };
    EXPECT_EXIT(finalize(), testing::ExitedWithCode(0), "");
}

using LocalizerDeathTest = LocalizerTest;

TEST_F(LocalizerDeathTest, LanguageCountIsNotSupported) {
    EXPECT_EXIT(
        CLocalizer::GetLocalizer()->GetLocalizeLanguageCount(), testing::KilledBySignal(SIGABRT),
        ": Common/CDefaultLocalizer\\.cpp:63: virtual long unsigned int "
        "varno_zpk::CDefaultLocalizer::GetLocalizeLanguageCount\\(\\) const: Assertion `0' failed\\.\n$");
}

TEST_F(LocalizerDeathTest, LanguageAtIsNotSupported) {
    EXPECT_EXIT(CLocalizer::GetLocalizer()->GetLocalizeLanguageAt(0), testing::KilledBySignal(SIGABRT),
                ": Common/CDefaultLocalizer\\.cpp:72: virtual const char\\* "
                "varno_zpk::CDefaultLocalizer::GetLocalizeLanguageAt\\(long unsigned int\\) const: "
                "Assertion `0' failed\\.\n$");
}

TEST_F(LocalizerDeathTest, LocalizerAfterFinalizationIsAProgrammingError) {
    const auto finalize = [] {
        CLocalizer::GetLocalizer();
        CAutoFinalizeObject::FinalizeAllObjects();
        CLocalizer::GetLocalizer();
    };
    EXPECT_EXIT(finalize(), testing::KilledBySignal(SIGABRT),
                ": Common/CAutoFinalizeObject\\.cpp:[0-9]+: "
                "varno_zpk::CAutoFinalizeObject::CAutoFinalizeObject\\(\\): "
                "Assertion `!s_AllObjectsFinalized' failed\\.\n$");
}

template <typename Class>
using LocalizeKey = const char* (Class::*)(const char*) const;
template <typename Class>
using LocalizeKeyInLanguage = const char* (Class::*)(const char*, const char*);

TEST(LocalizerSlotTest, Interface) {
    // The destructor takes the first two places.
    EXPECT_EQ(virtualSlot<LocalizeKey<ILocalizer>>(&ILocalizer::Localize), 3u);
    EXPECT_EQ(virtualSlot<LocalizeKeyInLanguage<ILocalizer>>(&ILocalizer::Localize), 4u);
    EXPECT_EQ(virtualSlot(&ILocalizer::GetDefaultLocalizeLanguage), 5u);
    EXPECT_EQ(virtualSlot(&ILocalizer::GetLocalizeLanguageCount), 6u);
    EXPECT_EQ(virtualSlot(&ILocalizer::GetLocalizeLanguageAt), 7u);
}

TEST(LocalizerSlotTest, DefaultLocalizer) {
    EXPECT_EQ(virtualSlot(&CDefaultLocalizer::AutoFinalizeObjectFinalize), 3u);
    EXPECT_EQ(virtualSlot<LocalizeKey<CDefaultLocalizer>>(&CDefaultLocalizer::Localize), 4u);
    EXPECT_EQ(virtualSlot<LocalizeKeyInLanguage<CDefaultLocalizer>>(&CDefaultLocalizer::Localize), 5u);
    EXPECT_EQ(virtualSlot(&CDefaultLocalizer::GetLocalizeLanguageCount), 6u);
    EXPECT_EQ(virtualSlot(&CDefaultLocalizer::GetLocalizeLanguageAt), 7u);
}

TEST(LocalizerSlotTest, ClassTree) {
    static_assert(std::is_base_of_v<ILocalizer, CLocalizerBase>);
    static_assert(std::is_base_of_v<CLocalizerBase, CLocalizer>);
    static_assert(std::is_abstract_v<CLocalizer>);
    // The finalized object comes first, and nothing is added to the two.
    CLocalizer* localizer = CDefaultLocalizer::GetLocalizer();
    auto* object = dynamic_cast<CDefaultLocalizer*>(localizer);
    ASSERT_NE(object, nullptr);
    EXPECT_EQ(static_cast<void*>(static_cast<CAutoFinalizeObject*>(object)), static_cast<void*>(object));
    EXPECT_EQ(sizeof(CDefaultLocalizer), sizeof(CAutoFinalizeObject) + sizeof(CLocalizer));
    delete localizer;
}

TEST(StringDefineTest, KeysOfTheTables) {
    using namespace varno_zpk;
    const std::pair<const char*, const char*> keys[] = {
        {ZPKSTRING_FILE_EXTRACT, "ZPKString_FILE_EXTRACT"},
        {ZPKSTRING_OK, "ZPKString_OK"},
        {ZPKSTRING_ERROR, "ZPKString_Error"},
        {ZPKSTRING_ERROR_CORRUPT, "ZPKString_ERROR_CORRUPT"},
        {ZPKSTRING_TEMPFOLDERCREATEFAILURE, "ZPKString_TEMPFOLDERCREATEFAILURE"},
        {ZPKSTRING_ERROR_EXTRACT, "ZPKString_ERROR_EXTRACT"},
        {ZPKSTRING_ERROR_INIT, "ZPKString_ERROR_INIT"},
        {ZPKSTRING_UPDATE_FAILURE, "ZPKString_UPDATE_FAILURE"},
        {ZPKSTRING_DISCCHECK_TITLE, "ZPKString_DISCCHECK_TITLE"},
        {ZPKSTRING_DISCCHECK_MESSAGE, "ZPKString_DISCCHECK_MESSAGE"},
        {ZPKSTRING_DISCCHECK_START, "ZPKString_DISCCHECK_START"},
        {ZPKSTRING_DISCCHECK_CANCEL, "ZPKString_DISCCHECK_CANCEL"},
        {ZPKSTRING_DISCCHECK_SERACHING, "ZPKString_DISCCHECK_SERACHING"},
        {ZPKSTRING_UPDATE_INVALID_DISC, "ZPKString_UPDATE_INVALID_DISC"},
        {ZPKSTRING_FONTNAME_FORMAC, "ZPKString_FontName_ForMac"},
        {ZPKSTRING_FONTNAME_FORWIN, "ZPKString_FontName_ForWin"},
        {ZPKSTRING_FONTSIZE_FORWIN, "ZPKString_FontSize_ForWin"},
        {ZPKSTRING_ABOUTZEPHYRKIT, "ZPKString_AboutZephyrkit"},
        {ZPKSTRING_PREFERENCES, "ZPKString_Preferences"},
        {ZPKSTRING_SERVICES, "ZPKString_Services"},
        {ZPKSTRING_HIDEZEPHYRKIT, "ZPKString_HideZephyrkit"},
        {ZPKSTRING_HIDEOTHERS, "ZPKString_HideOthers"},
        {ZPKSTRING_SHOWALL, "ZPKString_ShowAll"},
        {ZPKSTRING_QUITZEPHYRKIT, "ZPKString_QuitZephyrkit"}};
    for (const auto& [constant, key] : keys) {
        EXPECT_STREQ(constant, key);
    }
}

TEST(StringDefineTest, LanguageConstants) {
    EXPECT_STREQ(varno_zpk::CLocaleDefine::LANGUAGE_ENGLISH, "en");
    EXPECT_STREQ(varno_zpk::CLocaleDefine::BASIC_LANGUAGE, "en");
}

}  // namespace
