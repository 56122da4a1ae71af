// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Common/CResourceBundle.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "Common/CFileManager.h"
#include "Common/CLocaleDefine.h"
#include "Common/CResourceBundleLanguageData.h"
#include "Common/CResourceBundlePrivateManager.h"
#include "Common/CResourceBundleStringElement.h"
#include "Common/CResourceBundleStringTable.h"
#include "Tests/Support/CapturedStreams.h"
#include "Tests/Support/TemporaryFolder.h"

namespace {

using varno_zpk::CBaseObject;
using varno_zpk::CCompareElementToKey;
using varno_zpk::CFileManager;
using varno_zpk::CLocaleDefine;
using varno_zpk::CNonCopyableObject;
using varno_zpk::CResourceBundle;
using varno_zpk::CResourceBundleLanguageData;
using varno_zpk::CResourceBundlePrivateManager;
using varno_zpk::CResourceBundleStringElement;
using varno_zpk::CResourceBundleStringTable;
using zpk_test::CapturedStreams;
using zpk_test::CaptureStreams;
using zpk_test::TemporaryFolder;
using zpk_test::WriteFile;

/// A manager of the test's own, which it takes down with all its bundles.
class ResourceBundleTest : public testing::Test {
protected:
    ~ResourceBundleTest() override { delete CResourceBundlePrivateManager::GetManager(); }

    /// Writes the table `name` (`<code>/<file>`, or a file of the root) of the bundle.
    void WriteTable(const std::string& name, const std::string& contents) const {
        WriteFile(m_bundle + "/" + name, contents);
    }
    void MakeFolder(const std::string& name) const {
        std::filesystem::create_directories(m_bundle + "/" + name);
    }
    void AddBundle() const { CResourceBundle::AddDefaultBundlePath(m_bundle.c_str()); }
    CResourceBundle* Bundle() const { return CResourceBundle::GetResourceBundleWithPath(m_bundle.c_str()); }

    static std::string Text(const char* key) { return CResourceBundle::GetLocalizedString(key); }
    static std::string Text(const char* key, const char* table) {
        return CResourceBundle::GetLocalizedString(key, table);
    }

    const TemporaryFolder m_folder;
    const std::string m_bundle = m_folder / "UILang";
};

TEST_F(ResourceBundleTest, Constants) {
    EXPECT_STREQ(CResourceBundleLanguageData::DEFAULT_TABLE_NAME, "ZPKStringTable.def");
    EXPECT_STREQ(CResourceBundleLanguageData::DEFAULT_PLATFORM_TABLE_NAME, "ZPKPlatformStringTable.def");
    EXPECT_STREQ(CLocaleDefine::BASIC_LANGUAGE, "en");
    EXPECT_STREQ(CLocaleDefine::LANGUAGE_ENGLISH, "en");
}

TEST_F(ResourceBundleTest, StartsWithTheBasicLanguagesAndNoDefaultBundle) {
    EXPECT_STREQ(CResourceBundle::GetCurrentLanguage(), "en");
    EXPECT_STREQ(CResourceBundle::GetAlternativeLanguage(), "en");
    EXPECT_EQ(CResourceBundle::GetDefaultBundleCount(), 0u);
}

// The bundles.

TEST_F(ResourceBundleTest, PathIsTheIdentityOfABundle) {
    CResourceBundle* bundle = Bundle();
    EXPECT_EQ(bundle->GetPath(), m_bundle);
    EXPECT_EQ(Bundle(), bundle);
    // Compared byte by byte, however the file system sees them.
    EXPECT_NE(CResourceBundle::GetResourceBundleWithPath((m_bundle + "/").c_str()), bundle);
    EXPECT_NE(CResourceBundle::GetResourceBundleWithPath((m_folder / "uilang").c_str()), bundle);
    EXPECT_NE(CResourceBundle::GetResourceBundleWithPath((m_folder / "./UILang").c_str()), bundle);
    EXPECT_EQ(CResourceBundle::GetDefaultBundleCount(), 0u);
}

TEST_F(ResourceBundleTest, DefaultBundlesKeepTheOrderOfAdditionAndAreAddedOnce) {
    const char* first = "/bundle one";
    const char* second = "/bundle two";
    CResourceBundle* bundle = CResourceBundle::GetResourceBundleWithPath(second);
    CResourceBundle::AddDefaultBundlePath(first);
    CResourceBundle::AddDefaultBundlePath(second);
    CResourceBundle::AddDefaultBundlePath(first);
    ASSERT_EQ(CResourceBundle::GetDefaultBundleCount(), 2u);
    EXPECT_EQ(CResourceBundle::GetDefaultBundleAt(0)->GetPath(), first);
    EXPECT_EQ(CResourceBundle::GetDefaultBundleAt(1), bundle);
}

TEST_F(ResourceBundleTest, DefaultBundleIndexPastTheCountThrows) {
    EXPECT_THROW(CResourceBundle::GetDefaultBundleAt(0), std::out_of_range);
    AddBundle();
    EXPECT_EQ(CResourceBundle::GetDefaultBundleAt(0), Bundle());
    EXPECT_THROW(CResourceBundle::GetDefaultBundleAt(1), std::out_of_range);
    EXPECT_THROW(CResourceBundle::GetDefaultBundleAt(static_cast<std::size_t>(-1)), std::out_of_range);
}

TEST_F(ResourceBundleTest, ClearedDefaultBundlesStayLoaded) {
    AddBundle();
    CResourceBundle* bundle = CResourceBundle::GetDefaultBundleAt(0);
    CResourceBundle::ClearAllDefaultBundles();
    EXPECT_EQ(CResourceBundle::GetDefaultBundleCount(), 0u);
    EXPECT_EQ(CResourceBundlePrivateManager::GetManager()->FindDefaultBundleWithPath(m_bundle.c_str()),
              nullptr);
    EXPECT_EQ(CResourceBundlePrivateManager::GetManager()->FindLoadedBundleWithPath(m_bundle.c_str()),
              bundle);
    EXPECT_EQ(Bundle(), bundle);
}

TEST_F(ResourceBundleTest, BundleRegistersItselfForItsLife) {
    auto* manager = CResourceBundlePrivateManager::GetManager();
    {
        CResourceBundle bundle("/bundle");
        EXPECT_EQ(manager->FindLoadedBundleWithPath("/bundle"), &bundle);
        EXPECT_EQ(CResourceBundle::GetResourceBundleWithPath("/bundle"), &bundle);
    }
    EXPECT_EQ(manager->FindLoadedBundleWithPath("/bundle"), nullptr);
}

// Lookup.

TEST_F(ResourceBundleTest, KeyItselfComesBackWithoutBundles) {
    const char* key = "ZPKString_OK";
    EXPECT_EQ(CResourceBundle::GetLocalizedString(key), key);
    EXPECT_EQ(CResourceBundle::GetLocalizedString(key, "table.def"), key);
}

TEST_F(ResourceBundleTest, MissedKeyComesBackAsTheSamePointerSilently) {
    WriteTable("en/ZPKStringTable.def", "a=1;");
    AddBundle();
    CResourceBundle::AddDefaultBundlePath((m_folder / "missing").c_str());
    const std::string key = "b";
    const CapturedStreams streams = CaptureStreams([&] {
        EXPECT_EQ(CResourceBundle::GetLocalizedString(key.c_str()), key.c_str());
        EXPECT_EQ(CResourceBundle::GetLocalizedString(key.c_str(), "missing.def"), key.c_str());
        EXPECT_EQ(CResourceBundle::GetLocalizedString(key.c_str(), nullptr, Bundle()), key.c_str());
    });
    EXPECT_EQ(streams.standardOutput, "");
    EXPECT_EQ(streams.standardError, "");
}

TEST_F(ResourceBundleTest, HitIsTracedToTheByte) {
    WriteTable("en/ZPKStringTable.def", "key = \"a %s text\";");
    AddBundle();
    const CapturedStreams streams = CaptureStreams([] { EXPECT_EQ(Text("key"), "a %s text"); });
    EXPECT_EQ(streams.standardOutput, "");
    EXPECT_EQ(streams.standardError, "CResourceBundleStringTable::GetStringForKey: " + m_bundle +
                                         "/en/ZPKStringTable.def: ZPKStringTable.def: 'key'='a %s text'\n");
}

TEST_F(ResourceBundleTest, EveryHitIsTraced) {
    WriteTable("en/table.def", "key=1;");
    AddBundle();
    const std::string line =
        "CResourceBundleStringTable::GetStringForKey: " + m_bundle + "/en/table.def: table.def: 'key'='1'\n";
    const CapturedStreams streams = CaptureStreams([] {
        EXPECT_EQ(Text("key", "table.def"), "1");
        EXPECT_EQ(Text("key", "table.def"), "1");
    });
    EXPECT_EQ(streams.standardError, line + line);
}

TEST_F(ResourceBundleTest, FaultsAreReportedWhenTheTableIsFirstLoaded) {
    WriteTable("en/ZPKStringTable.def", "a;b=2;");
    AddBundle();
    const std::string fault = "[path=" + m_bundle + "/en/ZPKStringTable.def:line=1:byte=2]Syntax error.\n";
    EXPECT_EQ(CaptureStreams([] { EXPECT_EQ(Text("b"), "2"); }).standardOutput, fault);
    EXPECT_EQ(CaptureStreams([] { EXPECT_EQ(Text("b"), "2"); }).standardOutput, "");
}

TEST_F(ResourceBundleTest, TextIsTheOneStoredInTheTable) {
    WriteTable("en/ZPKStringTable.def", "a=1;");
    AddBundle();
    const char* text = CResourceBundle::GetLocalizedString("a");
    EXPECT_EQ(CResourceBundle::GetLocalizedString("a"), text);
    EXPECT_STREQ(text, "1");
}

TEST_F(ResourceBundleTest, PlatformTableWinsOverTheDefaultTable) {
    WriteTable("en/ZPKPlatformStringTable.def", "both=platform;");
    WriteTable("en/ZPKStringTable.def", "both=default;one=default;");
    AddBundle();
    EXPECT_EQ(Text("both"), "platform");
    EXPECT_EQ(Text("one"), "default");
}

TEST_F(ResourceBundleTest, EmptyTextIsAHit) {
    WriteTable("en/ZPKPlatformStringTable.def", "key=;");
    WriteTable("en/ZPKStringTable.def", "key=default;");
    AddBundle();
    EXPECT_EQ(Text("key"), "");
}

TEST_F(ResourceBundleTest, RootTablesAreTheLastSource) {
    WriteTable("ZPKPlatformStringTable.def", "a=root platform;b=root platform;");
    WriteTable("ZPKStringTable.def", "a=root;b=root;c=root;");
    WriteTable("en/ZPKStringTable.def", "a=en;");
    AddBundle();
    EXPECT_EQ(Text("a"), "en");
    EXPECT_EQ(Text("b"), "rootplatform");
    EXPECT_EQ(Text("c"), "root");
}

TEST_F(ResourceBundleTest, RootTablesServeWithoutAnyLanguageFolder) {
    WriteTable("ZPKStringTable.def", "a=root;");
    AddBundle();
    EXPECT_EQ(Text("a"), "root");
}

TEST_F(ResourceBundleTest, TableNameSearchesThatTableOnlyThenThatTableOfTheRoot) {
    WriteTable("en/ZPKPlatformStringTable.def", "other=1;");
    WriteTable("en/ZPKStringTable.def", "other=1;root=1;");
    WriteTable("ZPKStringTable.def", "other=1;");
    WriteTable("en/named.def", "key=en;");
    WriteTable("named.def", "key=root;root=root;");
    AddBundle();
    EXPECT_EQ(Text("key", "named.def"), "en");
    EXPECT_EQ(Text("root", "named.def"), "root");
    const char* other = "other";
    EXPECT_EQ(CResourceBundle::GetLocalizedString(other, "named.def"), other);
}

TEST_F(ResourceBundleTest, TablesAskedForInTurnAreKeptApart) {
    WriteTable("en/one.def", "key=one;");
    WriteTable("en/two.def", "key=two;");
    WriteTable("en/ZPKStringTable.def", "key=default;");
    AddBundle();
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(Text("key", "one.def"), "one");
        EXPECT_EQ(Text("key", "two.def"), "two");
        EXPECT_EQ(Text("key"), "default");
        EXPECT_EQ(Text("key", "ZPKStringTable.def"), "default");
    }
}

TEST_F(ResourceBundleTest, BundleAddedLastWins) {
    WriteFile(m_folder / "one/en/ZPKStringTable.def", "a=one;b=one;");
    WriteFile(m_folder / "two/ZPKStringTable.def", "a=two;");
    CResourceBundle::AddDefaultBundlePath((m_folder / "one").c_str());
    CResourceBundle::AddDefaultBundlePath((m_folder / "two").c_str());
    EXPECT_EQ(Text("a"), "two");
    EXPECT_EQ(Text("b"), "one");
}

TEST_F(ResourceBundleTest, TextThatReadsLikeItsKeyIsAHit) {
    WriteFile(m_folder / "one/en/ZPKStringTable.def", "a=one;");
    WriteFile(m_folder / "two/en/ZPKStringTable.def", "a=a;");
    CResourceBundle::AddDefaultBundlePath((m_folder / "one").c_str());
    CResourceBundle::AddDefaultBundlePath((m_folder / "two").c_str());
    const char* key = "a";
    EXPECT_STREQ(CResourceBundle::GetLocalizedString(key), "a");
    EXPECT_NE(CResourceBundle::GetLocalizedString(key), key);
}

TEST_F(ResourceBundleTest, OneBundleCanBeAsked) {
    WriteFile(m_folder / "one/en/ZPKStringTable.def", "a=one;");
    WriteFile(m_folder / "two/en/ZPKStringTable.def", "a=two;");
    CResourceBundle::AddDefaultBundlePath((m_folder / "two").c_str());
    CResourceBundle* one = CResourceBundle::GetResourceBundleWithPath((m_folder / "one").c_str());
    EXPECT_STREQ(CResourceBundle::GetLocalizedString("a", nullptr, one), "one");
    EXPECT_STREQ(CResourceBundle::GetLocalizedString("a", "ZPKStringTable.def", one), "one");
}

TEST_F(ResourceBundleTest, MissingTableStaysEmpty) {
    MakeFolder("en");
    AddBundle();
    EXPECT_EQ(Text("a"), "a");
    WriteTable("en/ZPKStringTable.def", "a=1;");
    EXPECT_EQ(Text("a"), "a");
    CResourceBundle::SetCurrentLanguage("ja");
    CResourceBundle::SetCurrentLanguage("en");
    EXPECT_EQ(Text("a"), "a");
}

TEST_F(ResourceBundleTest, LoadedTableIsNotReadAgain) {
    WriteTable("en/ZPKStringTable.def", "a=1;");
    WriteTable("ja/ZPKStringTable.def", "a=2;");
    AddBundle();
    EXPECT_EQ(Text("a"), "1");
    WriteTable("en/ZPKStringTable.def", "a=3;");
    CResourceBundle::SetCurrentLanguage("ja");
    EXPECT_EQ(Text("a"), "2");
    CResourceBundle::SetCurrentLanguage("en");
    EXPECT_EQ(Text("a"), "1");
}

TEST_F(ResourceBundleTest, FolderInPlaceOfATableIsAnEmptyTable) {
    MakeFolder("en/ZPKStringTable.def");
    AddBundle();
    EXPECT_EQ(Text("a"), "a");
}

// Languages.

TEST_F(ResourceBundleTest, AlternativeLanguageStandsInForAMissingFolder) {
    WriteTable("en/ZPKStringTable.def", "a=en;");
    AddBundle();
    CResourceBundle::SetCurrentLanguage("ja");
    EXPECT_EQ(Text("a"), "en");
}

TEST_F(ResourceBundleTest, AlternativeLanguageDoesNotStandInForAMissingKey) {
    WriteTable("ja/ZPKStringTable.def", "a=ja;");
    WriteTable("en/ZPKStringTable.def", "a=en;b=en;c=en;");
    WriteTable("ZPKStringTable.def", "b=root;");
    AddBundle();
    CResourceBundle::SetCurrentLanguage("ja");
    EXPECT_EQ(Text("a"), "ja");
    EXPECT_EQ(Text("b"), "root");
    EXPECT_EQ(Text("c"), "c");
}

TEST_F(ResourceBundleTest, FolderWithoutTablesCountsAsLanguageData) {
    MakeFolder("ja");
    WriteTable("en/ZPKStringTable.def", "a=en;");
    AddBundle();
    CResourceBundle::SetCurrentLanguage("ja");
    EXPECT_EQ(Text("a"), "a");
}

TEST_F(ResourceBundleTest, SettingTheCurrentLanguageAgainChangesNothing) {
    WriteTable("en/ZPKStringTable.def", "a=en;");
    AddBundle();
    CResourceBundle::SetCurrentLanguage("ja");
    EXPECT_EQ(Text("a"), "en");
    // The folder comes too late: the bundle has made its choice.
    WriteTable("ja/ZPKStringTable.def", "a=ja;");
    CResourceBundle::SetCurrentLanguage("ja");
    EXPECT_EQ(Text("a"), "en");
    CResourceBundle::SetCurrentLanguage("fr");
    CResourceBundle::SetCurrentLanguage("ja");
    EXPECT_EQ(Text("a"), "ja");
}

TEST_F(ResourceBundleTest, AnotherLanguageMakesEveryLoadedBundleChooseAgain) {
    WriteTable("en/ZPKStringTable.def", "a=en;");
    WriteTable("ja/ZPKStringTable.def", "a=ja;");
    WriteFile(m_folder / "other/en/ZPKStringTable.def", "b=en;");
    WriteFile(m_folder / "other/ja/ZPKStringTable.def", "b=ja;");
    AddBundle();
    CResourceBundle* other = CResourceBundle::GetResourceBundleWithPath((m_folder / "other").c_str());
    EXPECT_EQ(Text("a"), "en");
    EXPECT_STREQ(CResourceBundle::GetLocalizedString("b", nullptr, other), "en");
    CResourceBundle::SetCurrentLanguage("ja");
    EXPECT_STREQ(CResourceBundle::GetCurrentLanguage(), "ja");
    EXPECT_EQ(Text("a"), "ja");
    EXPECT_STREQ(CResourceBundle::GetLocalizedString("b", nullptr, other), "ja");
}

TEST_F(ResourceBundleTest, TextsOutliveAChangeOfLanguage) {
    WriteTable("en/ZPKStringTable.def", "a=en;");
    WriteTable("ja/ZPKStringTable.def", "a=ja;");
    AddBundle();
    const char* text = CResourceBundle::GetLocalizedString("a");
    CResourceBundle::SetCurrentLanguage("ja");
    EXPECT_EQ(Text("a"), "ja");
    EXPECT_STREQ(text, "en");
    CResourceBundle::SetCurrentLanguage("en");
    EXPECT_EQ(CResourceBundle::GetLocalizedString("a"), text);
}

TEST_F(ResourceBundleTest, AlternativeLanguageComesTooLateForABundleThatHasChosen) {
    WriteTable("en/ZPKStringTable.def", "a=en;");
    WriteTable("fr/ZPKStringTable.def", "a=fr;");
    AddBundle();
    CResourceBundle::SetCurrentLanguage("ja");
    EXPECT_EQ(Text("a"), "en");
    CResourceBundle::SetAlternativeLanguage("fr");
    EXPECT_STREQ(CResourceBundle::GetAlternativeLanguage(), "fr");
    EXPECT_EQ(Text("a"), "en");
    CResourceBundle::SetCurrentLanguage("ko");
    EXPECT_EQ(Text("a"), "fr");
}

TEST_F(ResourceBundleTest, EmptyLanguageHasNoLanguageData) {
    WriteTable("en/ZPKStringTable.def", "a=en;");
    WriteTable("ZPKStringTable.def", "a=root;");
    AddBundle();
    CResourceBundle::SetCurrentLanguage("");
    EXPECT_EQ(Text("a"), "en");
    CResourceBundle::SetAlternativeLanguage("");
    CResourceBundle::SetCurrentLanguage("ja");
    EXPECT_EQ(Text("a"), "root");
}

TEST_F(ResourceBundleTest, LanguageIsSpelledAsItsFolder) {
    WriteTable("zh_CN/ZPKStringTable.def", "a=cn;");
    AddBundle();
    CResourceBundle::SetCurrentLanguage("zh_cn");
    EXPECT_EQ(Text("a"), "a");
    CResourceBundle::SetCurrentLanguage("zh_CN");
    EXPECT_EQ(Text("a"), "cn");
}

TEST_F(ResourceBundleTest, CurrentLanguageCanBeSetFromItsOwnText) {
    CResourceBundle::SetCurrentLanguage("a language code that takes an allocation");
    CResourceBundle::SetCurrentLanguage(CResourceBundle::GetCurrentLanguage());
    CResourceBundle::SetCurrentLanguage(CResourceBundle::GetCurrentLanguage() + 2);
    EXPECT_STREQ(CResourceBundle::GetCurrentLanguage(), "language code that takes an allocation");
    CResourceBundle::SetAlternativeLanguage(CResourceBundle::GetCurrentLanguage());
    CResourceBundle::SetAlternativeLanguage(CResourceBundle::GetAlternativeLanguage());
    EXPECT_STREQ(CResourceBundle::GetAlternativeLanguage(), "language code that takes an allocation");
}

TEST_F(ResourceBundleTest, HasLanguageDataAsksForTheFolderOnly) {
    MakeFolder("xx");
    WriteTable("file", "");
    EXPECT_TRUE(Bundle()->HasLanguageData("xx"));
    EXPECT_FALSE(Bundle()->HasLanguageData("file"));
    EXPECT_FALSE(Bundle()->HasLanguageData("missing"));
    EXPECT_FALSE(Bundle()->HasLanguageData(""));
    EXPECT_FALSE(Bundle()->HasLanguageData(nullptr));
}

TEST_F(ResourceBundleTest, LanguageDataIsMadeOnceALanguage) {
    EXPECT_EQ(Bundle()->FindLanguageDataWithLanguage("ja"), nullptr);
    CResourceBundleLanguageData* data = Bundle()->GetLanguageDataWithLanguage("ja");
    EXPECT_EQ(data->GetLanguage(), "ja");
    EXPECT_EQ(Bundle()->GetLanguageDataWithLanguage("ja"), data);
    EXPECT_EQ(Bundle()->FindLanguageDataWithLanguage("ja"), data);
    EXPECT_NE(Bundle()->GetLanguageDataWithLanguage("en"), data);
}

TEST_F(ResourceBundleTest, TableIsMadeOnceAName) {
    WriteTable("en/table.def", "a=1;");
    CResourceBundleLanguageData data(m_bundle + "/en", "en");
    EXPECT_EQ(data.FindTableNamed("table.def"), nullptr);
    CResourceBundleStringTable* table = data.GetTableNamed("table.def");
    EXPECT_EQ(table->GetName(), "table.def");
    EXPECT_EQ(table->GetPath(), m_bundle + "/en/table.def");
    EXPECT_EQ(data.GetTableNamed("table.def"), table);
    EXPECT_EQ(data.FindTableNamed("table.def"), table);
    EXPECT_NE(data.GetTableNamed("other.def"), table);
}

TEST_F(ResourceBundleTest, LanguagesAreTheFoldersWithADefaultTableInTheOrderOfTheListing) {
    for (const std::string code : {"zh_CN", "en", "ja", "fr", "de", "ar"}) {
        WriteTable(code + "/ZPKStringTable.def", "a=1;");
    }
    WriteTable("xx/ZPKPlatformStringTable.def", "a=1;");
    WriteTable("ZPKStringTable.def", "a=1;");
    WriteTable("Languages.xml", "");
    MakeFolder("yy");
    std::filesystem::create_directory_symlink("en", m_bundle + "/link");

    std::vector<std::string> expected;
    CFileManager::GetManager()->GetFolderContents(m_bundle.c_str(), expected);
    std::erase_if(expected, [](const std::string& name) {
        return name == "xx" || name == "yy" || name == "link" || name.find('.') != std::string::npos;
    });
    ASSERT_EQ(expected.size(), 6u);

    std::vector<std::string> languages;
    for (std::size_t index = 0; index < Bundle()->GetLanguageCount(); ++index) {
        languages.emplace_back(Bundle()->GetLanguageAt(index));
    }
    EXPECT_EQ(languages, expected);
    EXPECT_THROW(Bundle()->GetLanguageAt(6), std::out_of_range);
}

TEST_F(ResourceBundleTest, FolderWithoutDefaultTableIsNotListedButUsed) {
    WriteTable("xx/ZPKPlatformStringTable.def", "a=xx;");
    AddBundle();
    EXPECT_EQ(Bundle()->GetLanguageCount(), 0u);
    EXPECT_TRUE(Bundle()->HasLanguageData("xx"));
    CResourceBundle::SetCurrentLanguage("xx");
    EXPECT_EQ(Text("a"), "xx");
}

TEST_F(ResourceBundleTest, LanguagesAreSetUpOnce) {
    EXPECT_EQ(Bundle()->GetLanguageCount(), 0u) << "the folder is missing";
    WriteTable("en/ZPKStringTable.def", "a=1;");
    EXPECT_EQ(Bundle()->GetLanguageCount(), 0u);
    CResourceBundle::SetCurrentLanguage("ja");
    EXPECT_EQ(Bundle()->GetLanguageCount(), 0u);
}

TEST_F(ResourceBundleTest, LanguageIndexIsCheckedOnFirstUseToo) {
    WriteTable("en/ZPKStringTable.def", "a=1;");
    EXPECT_STREQ(Bundle()->GetLanguageAt(0), "en");
    EXPECT_THROW(Bundle()->GetLanguageAt(1), std::out_of_range);
}

TEST_F(ResourceBundleTest, UnreadableFolderHasNoLanguagesAndNoTexts) {
    WriteTable("en/ZPKStringTable.def", "a=1;");
    AddBundle();
    ASSERT_EQ(chmod(m_bundle.c_str(), 0), 0);
    const auto look = [this] {
        // Root reads everything, so it becomes nobody first.
        if (geteuid() == 0 && setuid(65534) != 0) {
            _exit(2);
        }
        _exit(Bundle()->GetLanguageCount() == 0 && Text("a") == "a" ? 0 : 1);
    };
    EXPECT_EXIT(look(), testing::ExitedWithCode(0), "");
    ASSERT_EQ(chmod(m_bundle.c_str(), 0700), 0);
}

// Order and search.

TEST_F(ResourceBundleTest, EveryKeyOfALargeTableIsFound) {
    std::string contents;
    for (int number = 0; number < 1000; ++number) {
        // Neither sorted nor reversed.
        const std::string text = std::to_string(number * 7919 % 1000);
        contents += "key" + text + "=value" + text + ";\n";
    }
    WriteTable("en/ZPKStringTable.def", contents);
    AddBundle();
    testing::internal::CaptureStderr();
    for (int number = 0; number < 1000; ++number) {
        const std::string text = std::to_string(number);
        EXPECT_EQ(Text(("key" + text).c_str()), "value" + text);
    }
    EXPECT_EQ(Text("key1000"), "key1000");
    EXPECT_EQ(Text("key"), "key");
    EXPECT_EQ(Text(""), "");
    testing::internal::GetCapturedStderr();
}

TEST_F(ResourceBundleTest, KeysAreUnsignedBytesAndCaseMatters) {
    WriteTable("en/ZPKStringTable.def",
               "a=1;A=2;ab=3;aB=4;\"a b\"=5;\xC3\xA9=6;\xFF=7;~=8;\x01=9;a\xC3\xA9=10;");
    AddBundle();
    const std::pair<const char*, const char*> texts[] = {
        {"a", "1"},        {"A", "2"},    {"ab", "3"}, {"aB", "4"},   {"a b", "5"},
        {"\xC3\xA9", "6"}, {"\xFF", "7"}, {"~", "8"},  {"\x01", "9"}, {"a\xC3\xA9", "10"}};
    for (const auto& [key, text] : texts) {
        EXPECT_EQ(Text(key), text);
    }
    for (const char* key : {"B", "AB", "Ab", "\xC3", "\xFF\xFF", "", "abc"}) {
        EXPECT_EQ(CResourceBundle::GetLocalizedString(key), key);
    }
}

TEST_F(ResourceBundleTest, ComparisonOfElementsAndKeys) {
    const CResourceBundleStringElement a("a", "");
    const CResourceBundleStringElement ab("ab", "");
    const CResourceBundleStringElement high("\x80", "");
    const CCompareElementToKey less;

    EXPECT_TRUE(less(&a, &ab)) << "a prefix sorts first";
    EXPECT_FALSE(less(&ab, &a));
    EXPECT_FALSE(less(&a, &a));
    EXPECT_TRUE(less(&ab, &high)) << "bytes are unsigned";

    EXPECT_TRUE(less(&a, "ab"));
    EXPECT_FALSE(less(&a, "a"));
    EXPECT_FALSE(less(&high, "ab"));

    EXPECT_TRUE(less("a", &ab));
    EXPECT_FALSE(less("a", &a));
    EXPECT_FALSE(less("\x80", &ab));

    EXPECT_LT(CResourceBundleStringTable::CompareElements(&a, &ab), 0);
    EXPECT_EQ(CResourceBundleStringTable::CompareElements(&a, &a), 0);
    EXPECT_GT(CResourceBundleStringTable::CompareElements(&high, &ab), 0);
    EXPECT_LT(CResourceBundleStringTable::CompareElementToKey(&a, "ab"), 0);
    EXPECT_EQ(CResourceBundleStringTable::CompareElementToKey(&a, "a"), 0);
    EXPECT_GT(CResourceBundleStringTable::CompareElementToKey(&ab, "a"), 0);
}

TEST_F(ResourceBundleTest, OfDuplicateKeysTheOneThatTheSortPutsFirstIsFound) {
    std::string contents;
    std::vector<std::pair<std::string, std::string>> entries;
    for (int number = 0; number < 100; ++number) {
        const std::string key = "key" + std::to_string(number % 3);
        entries.emplace_back(key, std::to_string(number));
        contents += key + "=" + std::to_string(number) + ";";
    }
    std::sort(entries.begin(), entries.end(),
              [](const auto& one, const auto& two) { return one.first < two.first; });
    WriteTable("en/ZPKStringTable.def", contents);
    AddBundle();
    for (const std::string key : {"key0", "key1", "key2"}) {
        const auto first = std::find_if(entries.begin(), entries.end(),
                                        [&key](const auto& entry) { return entry.first == key; });
        EXPECT_EQ(Text(key.c_str()), first->second);
    }
}

/// What is in a table by mistake.
class Impostor : public CNonCopyableObject {
public:
    std::string m_key = "key";
    std::string m_value = "value";
};

TEST_F(ResourceBundleTest, ElementOfAnotherClassIsReportedWithItsPlace) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizer stops the program at the cast that follows the report";
#else
    const Impostor impostor;
    const CapturedStreams streams =
        CaptureStreams([&] { CResourceBundleStringTable::CompareElementToKey(&impostor, "key"); });
    EXPECT_TRUE(testing::internal::RE::FullMatch(
        streams.standardError,
        testing::internal::RE(
            "Common/CResourceBundleStringTable\\.cpp:[0-9]+: down_cast error\\."
            "'PKN9varno_zpk11CBaseObjectE'->'PKN9varno_zpk28CResourceBundleStringElementE'\n")))
        << streams.standardError;
#endif
}

// The manager.

TEST_F(ResourceBundleTest, ManagerIsMadeOnceAndAgainAfterItsDestruction) {
    auto* manager = CResourceBundlePrivateManager::GetManager();
    EXPECT_EQ(CResourceBundlePrivateManager::GetManager(), manager);
    AddBundle();
    CResourceBundle::SetCurrentLanguage("ja");
    CResourceBundle::SetAlternativeLanguage("fr");
    delete manager;
    EXPECT_STREQ(CResourceBundle::GetCurrentLanguage(), "en");
    EXPECT_STREQ(CResourceBundle::GetAlternativeLanguage(), "en");
    EXPECT_EQ(CResourceBundle::GetDefaultBundleCount(), 0u);
    EXPECT_EQ(CResourceBundlePrivateManager::GetManager()->FindLoadedBundleWithPath(m_bundle.c_str()),
              nullptr);
}

TEST_F(ResourceBundleTest, FinalizationDestroysTheBundles) {
    WriteTable("en/ZPKStringTable.def", "a=1;");
    WriteTable("ZPKStringTable.def", "b=1;");
    const auto finalize = [this] {
        AddBundle();
        CResourceBundle::GetResourceBundleWithPath("/another");
        const bool found = Text("a") == "1" && Text("b") == "1" && Bundle()->GetLanguageCount() == 1;
        varno_zpk::CAutoFinalizeObject::FinalizeAllObjects();
        // The leak checker, where there is one, runs at this exit.
        std::exit(found ? 0 : 1);
    };
    EXPECT_EXIT(finalize(), testing::ExitedWithCode(0), "");
}

using ResourceBundleDeathTest = ResourceBundleTest;

TEST_F(ResourceBundleDeathTest, SecondManagerIsAProgrammingError) {
    CResourceBundlePrivateManager::GetManager();
    EXPECT_EXIT(CResourceBundlePrivateManager(), testing::KilledBySignal(SIGABRT),
                ": Common/CResourceBundlePrivateManager\\.cpp:36: "
                "varno_zpk::CResourceBundlePrivateManager::CResourceBundlePrivateManager\\(\\): "
                "Assertion `s_Manager==NULL' failed\\.\n$");
}

TEST_F(ResourceBundleDeathTest, DestructionOfAnotherManagerIsAProgrammingError) {
    // A second manager cannot be made, so the bytes of the first stand in for one.
    alignas(CResourceBundlePrivateManager) static std::byte bytes[sizeof(CResourceBundlePrivateManager)];
    std::memcpy(bytes, static_cast<const void*>(CResourceBundlePrivateManager::GetManager()), sizeof(bytes));
    auto* other = reinterpret_cast<CResourceBundlePrivateManager*>(bytes);
    EXPECT_EXIT(other->~CResourceBundlePrivateManager(), testing::KilledBySignal(SIGABRT),
                ": Common/CResourceBundlePrivateManager\\.cpp:41: "
                "virtual varno_zpk::CResourceBundlePrivateManager::~CResourceBundlePrivateManager\\(\\): "
                "Assertion `s_Manager==this' failed\\.\n$");
}

TEST_F(ResourceBundleDeathTest, LookupInNoBundleIsAProgrammingError) {
    EXPECT_EXIT(CResourceBundle::GetLocalizedString("key", nullptr, nullptr),
                testing::KilledBySignal(SIGABRT),
                "Common/CResourceBundle\\.cpp:[0-9]+: static const char\\* "
                "varno_zpk::CResourceBundle::GetLocalizedString\\(const char\\*, const char\\*, "
                "varno_zpk::CResourceBundle\\*\\): Assertion `inBundle != nullptr' failed\\.\n$");
}

}  // namespace
