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
#include "Common/CResourceBundleStringTableParser.h"
#include "Tests/Support/CapturedStreams.h"
#include "Tests/Support/TemporaryFolder.h"

namespace {

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
using zpk_test::captureStreams;
using zpk_test::TemporaryFolder;
using zpk_test::writeFile;

/// A manager of the test's own, which it takes down with all its bundles.
class ResourceBundleTest : public testing::Test {
protected:
    ~ResourceBundleTest() override { delete CResourceBundlePrivateManager::GetManager(); }

    /// Writes the table `name` (`<code>/<file>`, or a file of the root) of the bundle.
    void writeTable(const std::string& name, const std::string& contents) const {
        writeFile(m_bundle + "/" + name, contents);
    }
    void makeFolder(const std::string& name) const {
        std::filesystem::create_directories(m_bundle + "/" + name);
    }
    void addBundle() const { CResourceBundle::AddDefaultBundlePath(m_bundle.c_str()); }
    CResourceBundle* theBundle() const {
        return CResourceBundle::GetResourceBundleWithPath(m_bundle.c_str());
    }

    static std::string localized(const char* key) { return CResourceBundle::GetLocalizedString(key); }
    static std::string localized(const char* key, const char* table) {
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
    CResourceBundle* bundle = theBundle();
    EXPECT_EQ(bundle->GetPath(), m_bundle);
    EXPECT_EQ(theBundle(), bundle);
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
    addBundle();
    EXPECT_EQ(CResourceBundle::GetDefaultBundleAt(0), theBundle());
    EXPECT_THROW(CResourceBundle::GetDefaultBundleAt(1), std::out_of_range);
    EXPECT_THROW(CResourceBundle::GetDefaultBundleAt(static_cast<std::size_t>(-1)), std::out_of_range);
}

TEST_F(ResourceBundleTest, ClearedDefaultBundlesStayLoaded) {
    addBundle();
    CResourceBundle* bundle = CResourceBundle::GetDefaultBundleAt(0);
    CResourceBundle::ClearAllDefaultBundles();
    EXPECT_EQ(CResourceBundle::GetDefaultBundleCount(), 0u);
    EXPECT_EQ(CResourceBundlePrivateManager::GetManager()->FindDefaultBundleWithPath(m_bundle.c_str()),
              nullptr);
    EXPECT_EQ(CResourceBundlePrivateManager::GetManager()->FindLoadedBundleWithPath(m_bundle.c_str()),
              bundle);
    EXPECT_EQ(theBundle(), bundle);
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
    writeTable("en/ZPKStringTable.def", "a=1;");
    addBundle();
    CResourceBundle::AddDefaultBundlePath((m_folder / "missing").c_str());
    const std::string key = "b";
    const CapturedStreams streams = captureStreams([&] {
        EXPECT_EQ(CResourceBundle::GetLocalizedString(key.c_str()), key.c_str());
        EXPECT_EQ(CResourceBundle::GetLocalizedString(key.c_str(), "missing.def"), key.c_str());
        EXPECT_EQ(CResourceBundle::GetLocalizedString(key.c_str(), nullptr, theBundle()), key.c_str());
    });
    EXPECT_EQ(streams.standardOutput, "");
    EXPECT_EQ(streams.standardError, "");
}

TEST_F(ResourceBundleTest, HitIsTracedToTheByte) {
    writeTable("en/ZPKStringTable.def", "key = \"a %s text\";");
    addBundle();
    const CapturedStreams streams = captureStreams([] { EXPECT_EQ(localized("key"), "a %s text"); });
    EXPECT_EQ(streams.standardOutput, "");
    EXPECT_EQ(streams.standardError, "CResourceBundleStringTable::GetStringForKey: " + m_bundle +
                                         "/en/ZPKStringTable.def: ZPKStringTable.def: 'key'='a %s text'\n");
}

TEST_F(ResourceBundleTest, TraceOfALongTextIsCut) {
    const std::string value = std::string(4094, 'v') + "\u65E5" + std::string(std::size_t{1} << 20, 'w');
    const std::string key(5000, 'k');
    writeTable("en/ZPKStringTable.def", key + " = \"" + value + "\";");
    addBundle();
    const CapturedStreams streams = captureStreams([&] { EXPECT_EQ(localized(key.c_str()), value); });
    EXPECT_EQ(streams.standardError, "CResourceBundleStringTable::GetStringForKey: " + m_bundle +
                                         "/en/ZPKStringTable.def: ZPKStringTable.def: '" +
                                         std::string(4096, 'k') + "...'='" + std::string(4094, 'v') +
                                         "...'\n");
}

TEST_F(ResourceBundleTest, EveryHitIsTraced) {
    writeTable("en/table.def", "key=1;");
    addBundle();
    const std::string line =
        "CResourceBundleStringTable::GetStringForKey: " + m_bundle + "/en/table.def: table.def: 'key'='1'\n";
    const CapturedStreams streams = captureStreams([] {
        EXPECT_EQ(localized("key", "table.def"), "1");
        EXPECT_EQ(localized("key", "table.def"), "1");
    });
    EXPECT_EQ(streams.standardError, line + line);
}

TEST_F(ResourceBundleTest, TraceOfARootHitNamesTheFileInTheBundleFolder) {
    makeFolder("en");
    writeTable("ZPKStringTable.def", "key=1;");
    addBundle();
    const CapturedStreams streams = captureStreams([] { EXPECT_EQ(localized("key"), "1"); });
    EXPECT_EQ(streams.standardError, "CResourceBundleStringTable::GetStringForKey: " + m_bundle +
                                         "/ZPKStringTable.def: ZPKStringTable.def: 'key'='1'\n");
}

TEST_F(ResourceBundleTest, FaultsAreReportedWhenTheTableIsFirstLoaded) {
    writeTable("en/ZPKStringTable.def", "a;b=2;");
    addBundle();
    const std::string fault = "[path=" + m_bundle + "/en/ZPKStringTable.def:line=1:byte=2]Syntax error.\n";
    EXPECT_EQ(captureStreams([] { EXPECT_EQ(localized("b"), "2"); }).standardOutput, fault);
    EXPECT_EQ(captureStreams([] { EXPECT_EQ(localized("b"), "2"); }).standardOutput, "");
}

TEST_F(ResourceBundleTest, TextIsTheOneStoredInTheTable) {
    writeTable("en/ZPKStringTable.def", "a=1;");
    addBundle();
    const char* text = CResourceBundle::GetLocalizedString("a");
    EXPECT_EQ(CResourceBundle::GetLocalizedString("a"), text);
    EXPECT_STREQ(text, "1");
}

TEST_F(ResourceBundleTest, PlatformTableWinsOverTheDefaultTable) {
    writeTable("en/ZPKPlatformStringTable.def", "both=platform;");
    writeTable("en/ZPKStringTable.def", "both=default;one=default;");
    addBundle();
    EXPECT_EQ(localized("both"), "platform");
    EXPECT_EQ(localized("one"), "default");
}

TEST_F(ResourceBundleTest, EmptyTextIsAHit) {
    writeTable("en/ZPKPlatformStringTable.def", "key=;");
    writeTable("en/ZPKStringTable.def", "key=default;");
    addBundle();
    EXPECT_EQ(localized("key"), "");
}

TEST_F(ResourceBundleTest, RootTablesAreTheLastSource) {
    writeTable("ZPKPlatformStringTable.def", "a=root platform;b=root platform;");
    writeTable("ZPKStringTable.def", "a=root;b=root;c=root;");
    writeTable("en/ZPKStringTable.def", "a=en;");
    addBundle();
    EXPECT_EQ(localized("a"), "en");
    EXPECT_EQ(localized("b"), "rootplatform");
    EXPECT_EQ(localized("c"), "root");
}

TEST_F(ResourceBundleTest, RootTablesServeWithoutAnyLanguageFolder) {
    writeTable("ZPKStringTable.def", "a=root;");
    addBundle();
    EXPECT_EQ(localized("a"), "root");
}

TEST_F(ResourceBundleTest, TableNameSearchesThatTableOnlyThenThatTableOfTheRoot) {
    writeTable("en/ZPKPlatformStringTable.def", "other=1;");
    writeTable("en/ZPKStringTable.def", "other=1;root=1;");
    writeTable("ZPKStringTable.def", "other=1;");
    writeTable("en/named.def", "key=en;");
    writeTable("named.def", "key=root;root=root;");
    addBundle();
    EXPECT_EQ(localized("key", "named.def"), "en");
    EXPECT_EQ(localized("root", "named.def"), "root");
    const char* other = "other";
    EXPECT_EQ(CResourceBundle::GetLocalizedString(other, "named.def"), other);
}

TEST_F(ResourceBundleTest, NamedRootTableServesWithoutAnyLanguageFolder) {
    writeTable("named.def", "key=root;");
    addBundle();
    EXPECT_EQ(localized("key", "named.def"), "root");
}

TEST_F(ResourceBundleTest, EmptyTableNameIsANameAndNotTheDefaultTables) {
    writeTable("en/ZPKPlatformStringTable.def", "key=platform;");
    writeTable("en/ZPKStringTable.def", "key=default;");
    writeTable("ZPKStringTable.def", "key=root;");
    addBundle();
    const char* key = "key";
    EXPECT_EQ(CResourceBundle::GetLocalizedString(key, ""), key);
    EXPECT_EQ(localized(key), "platform");
}

TEST_F(ResourceBundleTest, TablesAskedForInTurnAreKeptApart) {
    writeTable("en/one.def", "key=one;");
    writeTable("en/two.def", "key=two;");
    writeTable("en/ZPKStringTable.def", "key=default;");
    addBundle();
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(localized("key", "one.def"), "one");
        EXPECT_EQ(localized("key", "two.def"), "two");
        EXPECT_EQ(localized("key"), "default");
        EXPECT_EQ(localized("key", "ZPKStringTable.def"), "default");
    }
}

TEST_F(ResourceBundleTest, BundleAddedLastWins) {
    writeFile(m_folder / "one/en/ZPKStringTable.def", "a=one;b=one;");
    writeFile(m_folder / "two/ZPKStringTable.def", "a=two;");
    CResourceBundle::AddDefaultBundlePath((m_folder / "one").c_str());
    CResourceBundle::AddDefaultBundlePath((m_folder / "two").c_str());
    EXPECT_EQ(localized("a"), "two");
    EXPECT_EQ(localized("b"), "one");
}

TEST_F(ResourceBundleTest, TextThatReadsLikeItsKeyIsAHit) {
    writeFile(m_folder / "one/en/ZPKStringTable.def", "a=one;");
    writeFile(m_folder / "two/en/ZPKStringTable.def", "a=a;");
    CResourceBundle::AddDefaultBundlePath((m_folder / "one").c_str());
    CResourceBundle::AddDefaultBundlePath((m_folder / "two").c_str());
    const char* key = "a";
    EXPECT_STREQ(CResourceBundle::GetLocalizedString(key), "a");
    EXPECT_NE(CResourceBundle::GetLocalizedString(key), key);
}

TEST_F(ResourceBundleTest, OneBundleCanBeAsked) {
    writeFile(m_folder / "one/en/ZPKStringTable.def", "a=one;");
    writeFile(m_folder / "two/en/ZPKStringTable.def", "a=two;");
    CResourceBundle::AddDefaultBundlePath((m_folder / "two").c_str());
    CResourceBundle* one = CResourceBundle::GetResourceBundleWithPath((m_folder / "one").c_str());
    EXPECT_STREQ(CResourceBundle::GetLocalizedString("a", nullptr, one), "one");
    EXPECT_STREQ(CResourceBundle::GetLocalizedString("a", "ZPKStringTable.def", one), "one");
}

TEST_F(ResourceBundleTest, MissingTableStaysEmpty) {
    makeFolder("en");
    addBundle();
    EXPECT_EQ(localized("a"), "a");
    writeTable("en/ZPKStringTable.def", "a=1;");
    EXPECT_EQ(localized("a"), "a");
    CResourceBundle::SetCurrentLanguage("ja");
    CResourceBundle::SetCurrentLanguage("en");
    EXPECT_EQ(localized("a"), "a");
}

TEST_F(ResourceBundleTest, LoadedTableIsNotReadAgain) {
    writeTable("en/ZPKStringTable.def", "a=1;");
    writeTable("ja/ZPKStringTable.def", "a=2;");
    addBundle();
    EXPECT_EQ(localized("a"), "1");
    writeTable("en/ZPKStringTable.def", "a=3;");
    CResourceBundle::SetCurrentLanguage("ja");
    EXPECT_EQ(localized("a"), "2");
    CResourceBundle::SetCurrentLanguage("en");
    EXPECT_EQ(localized("a"), "1");
}

TEST_F(ResourceBundleTest, FolderInPlaceOfATableIsAnEmptyTable) {
    makeFolder("en/ZPKStringTable.def");
    addBundle();
    EXPECT_EQ(localized("a"), "a");
}

TEST_F(ResourceBundleTest, ItemsThatAreNoFilesAreEmptyTables) {
    makeFolder("en");
    ASSERT_EQ(::mkfifo((m_bundle + "/en/ZPKPlatformStringTable.def").c_str(), 0600), 0);
    ASSERT_EQ(::symlink("/dev/zero", (m_bundle + "/en/ZPKStringTable.def").c_str()), 0);
    writeTable("ZPKStringTable.def", "a=root;");
    addBundle();
    // Ends the program when the FIFO is waited for.
    ::alarm(60);
    EXPECT_EQ(localized("a"), "root");
    ::alarm(0);
}

TEST_F(ResourceBundleTest, DamagedTableServesWhatWasRead) {
    constexpr std::size_t kSize = varno_zpk::CResourceBundleStringTableParser::kLargestTable;
    writeTable("en/ZPKStringTable.def", "b=2;a=1;//" + std::string(kSize, '.') + "\nc=3;");
    addBundle();
    EXPECT_EQ(localized("a"), "1");
    EXPECT_EQ(localized("b"), "2");
    EXPECT_EQ(localized("c"), "c");
}

// Tables are loaded when they are first needed: one that is made after an earlier lookup is found.

TEST_F(ResourceBundleTest, DefaultTableIsNotLoadedWhileThePlatformTableServes) {
    writeTable("en/ZPKPlatformStringTable.def", "a=platform;");
    addBundle();
    EXPECT_EQ(localized("a"), "platform");
    writeTable("en/ZPKStringTable.def", "b=default;");
    EXPECT_EQ(localized("b"), "default");
}

TEST_F(ResourceBundleTest, RootTablesAreNotLoadedWhileTheLanguageServes) {
    writeTable("en/ZPKStringTable.def", "a=en;");
    addBundle();
    EXPECT_EQ(localized("a"), "en");
    writeTable("ZPKPlatformStringTable.def", "b=root;");
    EXPECT_EQ(localized("b"), "root");
}

TEST_F(ResourceBundleTest, AlternativeFolderIsNotLoadedWhileTheCurrentOneServes) {
    writeTable("ja/ZPKStringTable.def", "a=ja;");
    writeTable("fr/ZPKStringTable.def", "a=old;");
    CResourceBundle::SetCurrentLanguage("ja");
    CResourceBundle::SetAlternativeLanguage("fr");
    addBundle();
    EXPECT_EQ(localized("a"), "ja");
    EXPECT_EQ(localized("missing"), "missing");
    EXPECT_EQ(theBundle()->FindLanguageDataWithLanguage("fr"), nullptr);
    writeTable("fr/ZPKStringTable.def", "a=new;");
    CResourceBundle::SetCurrentLanguage("xx");
    EXPECT_EQ(localized("a"), "new");
}

// Languages.

TEST_F(ResourceBundleTest, AlternativeLanguageStandsInForAMissingFolder) {
    writeTable("en/ZPKStringTable.def", "a=en;");
    addBundle();
    CResourceBundle::SetCurrentLanguage("ja");
    EXPECT_EQ(localized("a"), "en");
}

TEST_F(ResourceBundleTest, AlternativeLanguageDoesNotStandInForAMissingKey) {
    writeTable("ja/ZPKStringTable.def", "a=ja;");
    writeTable("en/ZPKStringTable.def", "a=en;b=en;c=en;");
    writeTable("ZPKStringTable.def", "b=root;");
    addBundle();
    CResourceBundle::SetCurrentLanguage("ja");
    EXPECT_EQ(localized("a"), "ja");
    EXPECT_EQ(localized("b"), "root");
    EXPECT_EQ(localized("c"), "c");
}

TEST_F(ResourceBundleTest, FolderWithoutTablesCountsAsLanguageData) {
    makeFolder("ja");
    writeTable("en/ZPKStringTable.def", "a=en;");
    addBundle();
    CResourceBundle::SetCurrentLanguage("ja");
    EXPECT_EQ(localized("a"), "a");
}

TEST_F(ResourceBundleTest, SettingTheCurrentLanguageAgainChangesNothing) {
    writeTable("en/ZPKStringTable.def", "a=en;");
    addBundle();
    CResourceBundle::SetCurrentLanguage("ja");
    EXPECT_EQ(localized("a"), "en");
    // The folder comes too late: the bundle has made its choice.
    writeTable("ja/ZPKStringTable.def", "a=ja;");
    CResourceBundle::SetCurrentLanguage("ja");
    EXPECT_EQ(localized("a"), "en");
    CResourceBundle::SetCurrentLanguage("fr");
    CResourceBundle::SetCurrentLanguage("ja");
    EXPECT_EQ(localized("a"), "ja");
}

TEST_F(ResourceBundleTest, AnotherLanguageMakesEveryLoadedBundleChooseAgain) {
    writeTable("en/ZPKStringTable.def", "a=en;");
    writeTable("ja/ZPKStringTable.def", "a=ja;");
    writeFile(m_folder / "other/en/ZPKStringTable.def", "b=en;");
    writeFile(m_folder / "other/ja/ZPKStringTable.def", "b=ja;");
    addBundle();
    CResourceBundle* other = CResourceBundle::GetResourceBundleWithPath((m_folder / "other").c_str());
    EXPECT_EQ(localized("a"), "en");
    EXPECT_STREQ(CResourceBundle::GetLocalizedString("b", nullptr, other), "en");
    CResourceBundle::SetCurrentLanguage("ja");
    EXPECT_STREQ(CResourceBundle::GetCurrentLanguage(), "ja");
    EXPECT_EQ(localized("a"), "ja");
    EXPECT_STREQ(CResourceBundle::GetLocalizedString("b", nullptr, other), "ja");
}

TEST_F(ResourceBundleTest, TextsOutliveAChangeOfLanguage) {
    writeTable("en/ZPKStringTable.def", "a=en;");
    writeTable("ja/ZPKStringTable.def", "a=ja;");
    addBundle();
    const char* text = CResourceBundle::GetLocalizedString("a");
    CResourceBundle::SetCurrentLanguage("ja");
    EXPECT_EQ(localized("a"), "ja");
    EXPECT_STREQ(text, "en");
    CResourceBundle::SetCurrentLanguage("en");
    EXPECT_EQ(CResourceBundle::GetLocalizedString("a"), text);
}

TEST_F(ResourceBundleTest, AlternativeLanguageComesTooLateForABundleThatHasChosen) {
    writeTable("en/ZPKStringTable.def", "a=en;");
    writeTable("fr/ZPKStringTable.def", "a=fr;");
    addBundle();
    CResourceBundle::SetCurrentLanguage("ja");
    EXPECT_EQ(localized("a"), "en");
    CResourceBundle::SetAlternativeLanguage("fr");
    EXPECT_STREQ(CResourceBundle::GetAlternativeLanguage(), "fr");
    EXPECT_EQ(localized("a"), "en");
    CResourceBundle::SetCurrentLanguage("ko");
    EXPECT_EQ(localized("a"), "fr");
}

TEST_F(ResourceBundleTest, EmptyLanguageHasNoLanguageData) {
    writeTable("en/ZPKStringTable.def", "a=en;");
    writeTable("ZPKStringTable.def", "a=root;");
    addBundle();
    CResourceBundle::SetCurrentLanguage("");
    EXPECT_EQ(localized("a"), "en");
    CResourceBundle::SetAlternativeLanguage("");
    CResourceBundle::SetCurrentLanguage("ja");
    EXPECT_EQ(localized("a"), "root");
}

TEST_F(ResourceBundleTest, LanguageIsSpelledAsItsFolder) {
    writeTable("zh_CN/ZPKStringTable.def", "a=cn;");
    addBundle();
    CResourceBundle::SetCurrentLanguage("zh_cn");
    EXPECT_EQ(localized("a"), "a");
    CResourceBundle::SetCurrentLanguage("zh_CN");
    EXPECT_EQ(localized("a"), "cn");
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
    makeFolder("xx");
    writeTable("file", "");
    EXPECT_TRUE(theBundle()->HasLanguageData("xx"));
    EXPECT_FALSE(theBundle()->HasLanguageData("file"));
    EXPECT_FALSE(theBundle()->HasLanguageData("missing"));
    EXPECT_FALSE(theBundle()->HasLanguageData(""));
    EXPECT_FALSE(theBundle()->HasLanguageData(nullptr));
}

TEST_F(ResourceBundleTest, LanguageDataIsMadeOnceALanguage) {
    EXPECT_EQ(theBundle()->FindLanguageDataWithLanguage("ja"), nullptr);
    CResourceBundleLanguageData* data = theBundle()->GetLanguageDataWithLanguage("ja");
    EXPECT_EQ(data->GetLanguage(), "ja");
    EXPECT_EQ(theBundle()->GetLanguageDataWithLanguage("ja"), data);
    EXPECT_EQ(theBundle()->FindLanguageDataWithLanguage("ja"), data);
    EXPECT_NE(theBundle()->GetLanguageDataWithLanguage("en"), data);
}

TEST_F(ResourceBundleTest, TableIsMadeOnceAName) {
    writeTable("en/table.def", "a=1;");
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
        writeTable(code + "/ZPKStringTable.def", "a=1;");
    }
    writeTable("xx/ZPKPlatformStringTable.def", "a=1;");
    writeTable("ZPKStringTable.def", "a=1;");
    writeTable("Languages.xml", "");
    makeFolder("yy");
    std::filesystem::create_directory_symlink("en", m_bundle + "/link");

    std::vector<std::string> expected;
    CFileManager::GetManager()->GetFolderContents(m_bundle.c_str(), expected);
    std::erase_if(expected, [](const std::string& name) {
        return name == "xx" || name == "yy" || name == "link" || name.find('.') != std::string::npos;
    });
    ASSERT_EQ(expected.size(), 6u);

    std::vector<std::string> languages;
    for (std::size_t index = 0; index < theBundle()->GetLanguageCount(); ++index) {
        languages.emplace_back(theBundle()->GetLanguageAt(index));
    }
    EXPECT_EQ(languages, expected);
    EXPECT_THROW(theBundle()->GetLanguageAt(6), std::out_of_range);
}

TEST_F(ResourceBundleTest, LinkToALanguageFolderIsNotListedButUsed) {
    writeFile(m_folder / "elsewhere/ZPKStringTable.def", "a=linked;");
    makeFolder(".");
    std::filesystem::create_directory_symlink("../elsewhere", m_bundle + "/xx");
    addBundle();
    EXPECT_EQ(theBundle()->GetLanguageCount(), 0u);
    EXPECT_TRUE(theBundle()->HasLanguageData("xx"));
    CResourceBundle::SetCurrentLanguage("xx");
    EXPECT_EQ(localized("a"), "linked");
}

TEST_F(ResourceBundleTest, HiddenFolderIsALanguageLikeAnyOther) {
    writeTable(".xx/ZPKStringTable.def", "a=hidden;");
    addBundle();
    ASSERT_EQ(theBundle()->GetLanguageCount(), 1u);
    EXPECT_STREQ(theBundle()->GetLanguageAt(0), ".xx");
    EXPECT_TRUE(theBundle()->HasLanguageData(".xx"));
    CResourceBundle::SetCurrentLanguage(".xx");
    EXPECT_EQ(localized("a"), "hidden");
}

TEST_F(ResourceBundleTest, FolderWithoutDefaultTableIsNotListedButUsed) {
    writeTable("xx/ZPKPlatformStringTable.def", "a=xx;");
    addBundle();
    EXPECT_EQ(theBundle()->GetLanguageCount(), 0u);
    EXPECT_TRUE(theBundle()->HasLanguageData("xx"));
    CResourceBundle::SetCurrentLanguage("xx");
    EXPECT_EQ(localized("a"), "xx");
}

TEST_F(ResourceBundleTest, LanguagesAreSetUpOnce) {
    EXPECT_EQ(theBundle()->GetLanguageCount(), 0u) << "the folder is missing";
    writeTable("en/ZPKStringTable.def", "a=1;");
    EXPECT_EQ(theBundle()->GetLanguageCount(), 0u);
    CResourceBundle::SetCurrentLanguage("ja");
    EXPECT_EQ(theBundle()->GetLanguageCount(), 0u);
}

TEST_F(ResourceBundleTest, LanguageIndexIsCheckedOnFirstUseToo) {
    writeTable("en/ZPKStringTable.def", "a=1;");
    EXPECT_STREQ(theBundle()->GetLanguageAt(0), "en");
    EXPECT_THROW(theBundle()->GetLanguageAt(1), std::out_of_range);
}

TEST_F(ResourceBundleTest, UnreadableFolderHasNoLanguagesAndNoTexts) {
    writeTable("en/ZPKStringTable.def", "a=1;");
    addBundle();
    ASSERT_EQ(::chmod(m_bundle.c_str(), 0), 0);
    const auto look = [this] {
        // Root reads everything, so it becomes nobody first.
        if (::geteuid() == 0 && ::setuid(65534) != 0) {
            ::_exit(2);
        }
        ::_exit(theBundle()->GetLanguageCount() == 0 && localized("a") == "a" ? 0 : 1);
    };
    EXPECT_EXIT(look(), testing::ExitedWithCode(0), "");
    ASSERT_EQ(::chmod(m_bundle.c_str(), 0700), 0);
}

// Order and search.

TEST_F(ResourceBundleTest, EveryKeyOfALargeTableIsFound) {
    std::string contents;
    for (int number = 0; number < 1000; ++number) {
        // Neither sorted nor reversed.
        const std::string text = std::to_string(number * 7919 % 1000);
        contents += "key" + text + "=value" + text + ";\n";
    }
    writeTable("en/ZPKStringTable.def", contents);
    addBundle();
    testing::internal::CaptureStderr();
    for (int number = 0; number < 1000; ++number) {
        const std::string text = std::to_string(number);
        EXPECT_EQ(localized(("key" + text).c_str()), "value" + text);
    }
    EXPECT_EQ(localized("key1000"), "key1000");
    EXPECT_EQ(localized("key"), "key");
    EXPECT_EQ(localized(""), "");
    testing::internal::GetCapturedStderr();
}

TEST_F(ResourceBundleTest, KeysAreUnsignedBytesAndCaseMatters) {
    writeTable("en/ZPKStringTable.def",
               "a=1;A=2;ab=3;aB=4;\"a b\"=5;\xC3\xA9=6;\xFF=7;~=8;\x01=9;a\xC3\xA9=10;");
    addBundle();
    const std::pair<const char*, const char*> texts[] = {
        {"a", "1"},        {"A", "2"},    {"ab", "3"}, {"aB", "4"},   {"a b", "5"},
        {"\xC3\xA9", "6"}, {"\xFF", "7"}, {"~", "8"},  {"\x01", "9"}, {"a\xC3\xA9", "10"}};
    for (const auto& [key, text] : texts) {
        EXPECT_EQ(localized(key), text);
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
    writeTable("en/ZPKStringTable.def", contents);
    addBundle();
    for (const std::string key : {"key0", "key1", "key2"}) {
        const auto first = std::find_if(entries.begin(), entries.end(),
                                        [&key](const auto& entry) { return entry.first == key; });
        EXPECT_EQ(localized(key.c_str()), first->second);
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
        captureStreams([&] { CResourceBundleStringTable::CompareElementToKey(&impostor, "key"); });
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
    addBundle();
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
    writeTable("en/ZPKStringTable.def", "a=1;");
    writeTable("ZPKStringTable.def", "b=1;");
    const auto finalize = [this] {
        addBundle();
        CResourceBundle::GetResourceBundleWithPath("/another");
        const bool found =
            localized("a") == "1" && localized("b") == "1" && theBundle()->GetLanguageCount() == 1;
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
