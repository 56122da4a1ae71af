// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "InstallerCore/ZPKLanguageInfos.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <stdexcept>

#include "Common/CLocalizer.h"
#include "Common/CResourceBundle.h"
#include "InstallerCore/ZPKInterfaceLanguage.h"
#include "Tests/InstallerCore/ZPKCoreFixture.h"

using zpk_test::ScopedEnvironment;
using zpk_test::writeFile;

namespace {

struct ChoiceRow {
    const char* name;
    Lines offered;
    Lines preferred;
    Lines expected;
};

class PreferredLocalizationsTest : public ::testing::TestWithParam<ChoiceRow> {};

TEST_P(PreferredLocalizationsTest, FollowsThePersonsOrder) {
    EXPECT_EQ(ZPKLanguageInfos::preferredLocalizations(GetParam().offered, GetParam().preferred),
              GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, PreferredLocalizationsTest,
    ::testing::Values(
        ChoiceRow{"SimplifiedChinese", {"en", "ja", "zh_CN"}, {"zh-Hans", "en"}, {"zh_CN", "en"}},
        ChoiceRow{"PersonsOrder", {"en", "fr"}, {"ja", "fr", "de", "en"}, {"fr", "en"}},
        ChoiceRow{"RegionIsNotFolded", {"en"}, {"en-US"}, {}},
        ChoiceRow{"OfferedTwice", {"en", "fr", "en"}, {"en"}, {"en", "en"}},
        ChoiceRow{"PreferredTwice", {"fr", "en", "fr"}, {"fr", "en", "fr"}, {"fr", "fr", "en"}},
        ChoiceRow{"BothNamesOfSimplifiedChinese", {"zh_CN"}, {"zh_CN", "zh-Hans"}, {"zh_CN"}},
        ChoiceRow{"SystemsNameOfSimplifiedChineseIsReplaced", {"zh-Hans", "zh_CN"}, {"zh-Hans"}, {"zh_CN"}},
        ChoiceRow{"OtherChineseNamesStay", {"zh_CN"}, {"zh-Hant", "zh-Hans-CN"}, {}},
        ChoiceRow{"CaseCounts", {"EN"}, {"en"}, {}}, ChoiceRow{"NothingOffered", {}, {"en"}, {}},
        ChoiceRow{"NothingPreferred", {"en"}, {}, {}}),
    [](const auto& row) { return row.param.name; });

TEST(PreferredLocalizationsOfLongListTest, TimeGrowsWithItsLengthAlone) {
    // Minutes, if each of them made room for the next.
    const Lines offered(1000000, "en");
    EXPECT_EQ(ZPKLanguageInfos::preferredLocalizations(offered, {"de", "en"}), offered);
}

class ZPKLanguageInfosTest : public zpk_test::ZPKCoreFixture {
protected:
    ZPKLanguageInfosTest() {
        writeFile(m_bundle.resource("UILang/Languages.xml"),
                  "<L FallBackCode='de'><Language Code='en'/><Language Code='ja'/><Language Code='zh_CN'/>"
                  "<Language Code='nl'/></L>");
        for (const char* code : {"en", "ja", "zh_CN", "de"}) {
            writeFile(m_bundle.resource(std::string("UILang/") + code + "/ZPKStringTable.def"),
                      std::string("ZPKString_ShowAll = ") + code + ";");
        }
    }

    /// The language of the texts after the set-up of an application in that environment. The
    /// application's own list is made once a process, so each time another one is taken here.
    std::string languageFor(const char* language, const char* locale) const {
        const ScopedEnvironment list("LANGUAGE", language);
        const ScopedEnvironment single("LC_ALL", locale);
        const std::string told = ZPKInterfaceLanguage::setUp(m_bundle.resource(""), ZPKLanguageInfos());
        EXPECT_EQ(varno_zpk::CLocalizer::GetLocalizer()->Localize("ZPKString_ShowAll"), told);
        return told;
    }
};

TEST_F(ZPKLanguageInfosTest, ListIsComputedOnceAndKept) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    // The process's one list: in a process of its own, where nobody has asked for it yet.
    EXPECT_EXIT(
        {
            setenv("LC_ALL", "ja_JP.UTF-8", 1);
            const ZPKLanguageInfos& infos = ZPKLanguageInfos::infos();
            setenv("LC_ALL", "en_US.UTF-8", 1);
            const bool isKept = &ZPKLanguageInfos::infos() == &infos && infos.languageCount() == 1 &&
                                infos.languageAt(0) == "ja";
            std::_Exit(isKept ? 0 : 1);
        },
        ::testing::ExitedWithCode(0), "");
}

TEST_F(ZPKLanguageInfosTest, ChosenLanguagesAreListedByTheirPlaceAndCode) {
    const ScopedEnvironment japanese("LC_ALL", "ja_JP.UTF-8");
    const ZPKLanguageInfos infos;
    ASSERT_EQ(infos.languageCount(), 1u);
    EXPECT_EQ(infos.languageAt(0), "ja");
    EXPECT_THROW(infos.languageAt(1), std::out_of_range);
    ASSERT_NE(infos.propertyListWithLanguage("ja"), nullptr);
    EXPECT_EQ(*infos.propertyListWithLanguage("ja"), (ZPKLanguageInfos::PropertyList{{"Code", "ja"}}));
    EXPECT_EQ(infos.propertyListWithLanguage("en"), nullptr);
}

TEST_F(ZPKLanguageInfosTest, UnloadableListGivesNone) {
    writeFile(m_bundle.resource("UILang/Languages.xml"), "<L/>");
    const ScopedEnvironment japanese("LC_ALL", "ja_JP.UTF-8");
    EXPECT_EQ(ZPKLanguageInfos().languageCount(), 0u);
}

TEST_F(ZPKLanguageInfosTest, MostPreferredLanguageIsUsed) {
    EXPECT_EQ(languageFor("", "ja_JP.UTF-8"), "ja");
}

TEST_F(ZPKLanguageInfosTest, LanguageListGoesBeforeTheLocale) {
    EXPECT_EQ(languageFor("zh_SG:en", "ja_JP.UTF-8"), "zh_CN");
}

TEST_F(ZPKLanguageInfosTest, NothingPreferredGivesEnglish) {
    EXPECT_EQ(languageFor("", "C"), "en");
    EXPECT_STREQ(varno_zpk::CResourceBundle::GetAlternativeLanguage(), "de");
}

TEST_F(ZPKLanguageInfosTest, ListThatDoesNotLoadLeavesTheAlternativeLanguageAlone) {
    varno_zpk::CResourceBundle::SetAlternativeLanguage("nl");
    writeFile(m_bundle.resource("UILang/Languages.xml"), "<L><Language Code='en'/></L>");
    ZPKInterfaceLanguage::setUp(m_bundle.resource(""), ZPKLanguageInfos());
    EXPECT_STREQ(varno_zpk::CResourceBundle::GetAlternativeLanguage(), "nl");
}

TEST_F(ZPKLanguageInfosTest, EmptyFallBackCodeLoads) {
    writeFile(m_bundle.resource("UILang/Languages.xml"), "<L FallBackCode=''><Language Code='ja'/></L>");
    const ScopedEnvironment japanese("LC_ALL", "ja_JP.UTF-8");
    const ZPKLanguageInfos infos;
    EXPECT_EQ(infos.languageCount(), 1u);
    ZPKInterfaceLanguage::setUp(m_bundle.resource(""), infos);
    EXPECT_STREQ(varno_zpk::CResourceBundle::GetAlternativeLanguage(), "");
}

TEST_F(ZPKLanguageInfosTest, ApplicationTakesItsTextsFromItsLanguages) {
    m_core.awakeFromNib();
    EXPECT_EQ(logged({"language=", "menu 5="}), (Lines{"language=en", "menu 5=en"}));
}

TEST_F(ZPKLanguageInfosTest, OfferedLanguageWithoutFolderFallsBack) {
    EXPECT_EQ(languageFor("", "nl_NL.UTF-8"), "de");
}

}  // namespace
