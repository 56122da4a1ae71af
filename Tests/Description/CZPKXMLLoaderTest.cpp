// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Description/CZPKXMLLoader.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include "Common/CExpatXMLParser.h"
#include "Common/CXMLAttribute.h"
#include "Common/CXMLDocument.h"
#include "Common/CXMLText.h"
#include "Description/ZPKXMLDefine.h"
#include "Tests/Support/TemporaryFolder.h"

namespace {

using namespace varno_zpk;

/// Stands in for the default parser and tells when it is given back.
class WatchedParser : public CExpatXMLParser {
public:
    explicit WatchedParser(bool& isFinalized) : m_isFinalized(isFinalized) {}
    ~WatchedParser() override { m_isFinalized = true; }

    /// Takes the parser over, in the place of the one before.
    static void install(WatchedParser* parser) {
        Finalize();
        s_DefaultParser = parser;
        parser->m_isFinalized = false;
    }

private:
    bool& m_isFinalized;
};

/// A default parser whose documents have no root.
class RootlessParser : public WatchedParser {
public:
    using WatchedParser::WatchedParser;
    CXMLDocument* CreateXMLDocumentWithPath(const char*) override {
        return CXMLNode::CreateDocumentWithRootElement(nullptr);
    }
};

/// A default parser that throws what is no standard exception.
class ThrowingParser : public WatchedParser {
public:
    using WatchedParser::WatchedParser;
    CXMLDocument* CreateXMLDocumentWithPath(const char*) override { throw 1; }
};

/// A default parser that counts the trees that live.
class CountingParser : public WatchedParser {
public:
    class Root : public CXMLElement {
    public:
        explicit Root(std::vector<std::string>& events) : m_events(events) { InitWithName("root"); }
        ~Root() override { m_events.push_back("tree deleted"); }

    private:
        std::vector<std::string>& m_events;
    };

    CountingParser(bool& isFinalized, std::vector<std::string>& events)
        : WatchedParser(isFinalized), m_events(events) {}
    ~CountingParser() override { m_events.push_back("parser deleted"); }

    CXMLDocument* CreateXMLDocumentWithPath(const char* path) override {
        m_events.push_back(path);
        return CXMLNode::CreateDocumentWithRootElement(new Root(m_events));
    }

private:
    std::vector<std::string>& m_events;
};

class CZPKXMLLoaderTest : public ::testing::Test {
protected:
    CZPKXMLLoaderTest() { WatchedParser::install(new WatchedParser(isFinalized)); }
    ~CZPKXMLLoaderTest() override { CXMLParser::Finalize(); }

    std::string file(const std::string& xml) const {
        zpk_test::writeFile(folder / "description.xml", xml);
        return folder / "description.xml";
    }

    std::unique_ptr<CStartupType> loadStartup(const std::string& xml) const {
        return std::unique_ptr<CStartupType>(CZPKXMLLoader::LoadStartupXML(file(xml)));
    }
    std::unique_ptr<CUpdateInfoType> loadCondition(const std::string& xml) const {
        return std::unique_ptr<CUpdateInfoType>(CZPKXMLLoader::LoadConditionXML(file(xml)));
    }
    std::unique_ptr<const CLanguagesType> loadLanguages(const std::string& xml) const {
        return CZPKXMLLoader::LoadLanguagesXML(file(xml));
    }

    bool isFinalized = false;
    zpk_test::TemporaryFolder folder;
};

TEST(ZPKXMLDefineTest, NamesAreSpelledAsTheFilesSpellThem) {
    EXPECT_EQ(TAG_UPDATEINFO, "UpdateInfo");
    EXPECT_EQ(TAG_CONDITIONS, "Conditions");
    EXPECT_EQ(TAG_TARGETITEMS, "TargetItems");
    EXPECT_EQ(TAG_REGISTRY, "Registry");
    EXPECT_EQ(TAG_UIMLOG, "UIMLog");
    EXPECT_EQ(TAG_UNINSTALLXML, "UninstallXml");
    EXPECT_EQ(TAG_ITEMINFO, "ItemInfo");
    EXPECT_EQ(TAG_DISC, "Disc");
    EXPECT_EQ(TAG_LANGUAGES, "Languages");
    EXPECT_EQ(TAG_LANGUAGE, "Language");
    EXPECT_EQ(ATTR_XMLVERSION, "XmlVersion");
    EXPECT_EQ(ATTR_KEYNAME, "KeyName");
    EXPECT_EQ(ATTR_SIGNATURE, "Signature");
    EXPECT_EQ(ATTR_APPNAME, "AppName");
    EXPECT_EQ(ATTR_DISPLAYNAME, "DisplayName");
    EXPECT_EQ(ATTR_EXEC, "Exec");
    EXPECT_EQ(ATTR_PARAM, "Param");
    EXPECT_EQ(ATTR_FILEPATH, "FilePath");
    EXPECT_EQ(ATTR_FALLBACKCODE, "FallBackCode");
    EXPECT_EQ(ATTR_CODE, "Code");
}

TEST(DescriptionClassesTest, HaveNoVirtualOperations) {
    EXPECT_FALSE(std::is_polymorphic_v<CUpdateInfoType>);
    EXPECT_FALSE(std::is_polymorphic_v<CConditionsType>);
    EXPECT_FALSE(std::is_polymorphic_v<CTargetItemsType>);
    EXPECT_FALSE(std::is_polymorphic_v<CStartupType>);
    EXPECT_FALSE(std::is_polymorphic_v<CLanguagesType>);
    EXPECT_EQ(sizeof(CLanguageType), sizeof(std::string));
    EXPECT_EQ(sizeof(CRegistryType), sizeof(std::string));
    EXPECT_EQ(sizeof(CUIMLogType), sizeof(std::string));
    EXPECT_EQ(sizeof(CUninstallXMLType), sizeof(std::string));
    EXPECT_EQ(sizeof(CDiscType), sizeof(std::string));
    EXPECT_EQ(sizeof(CItemInfoType), sizeof(std::string));
}

template <typename... Members>
bool areInOrder(const Members&... members) {
    const std::vector<const void*> places{&members...};
    return std::is_sorted(places.begin(), places.end());
}

TEST(DescriptionClassesTest, MembersAreInOrder) {
    CXMLElement element;
    element.AddAttribute(CXMLNode::CreateAttributeWithNameWithStringValue("FallBackCode", "en"));
    element.AddChild(CXMLNode::CreateTextWithStringValue(" "));
    const CUpdateInfoType info(&element);
    EXPECT_TRUE(areInOrder(info.xmlVersion, info.conditions, info.targetItems));
    const CConditionsType conditions(&element);
    EXPECT_TRUE(
        areInOrder(conditions.registries, conditions.uimLogs, conditions.uninstallXmls, conditions.discs));
    const CStartupType startup(&element);
    EXPECT_TRUE(areInOrder(startup.exec, startup.param));
    const CLanguagesType languages(element);
    EXPECT_TRUE(areInOrder(languages.languages, languages.fallBackCode));
}

TEST_F(CZPKXMLLoaderTest, StartupRootMayHaveAnyName) {
    const auto startup = loadStartup("<anything Exec='a' Param='b'/>");
    ASSERT_NE(startup, nullptr);
    EXPECT_EQ(startup->exec, "a");
    EXPECT_EQ(startup->param, "b");
}

TEST_F(CZPKXMLLoaderTest, StartupWithoutAttributesHasEmptyTexts) {
    const auto startup = loadStartup("<Startup/>");
    ASSERT_NE(startup, nullptr);
    EXPECT_EQ(startup->exec, "");
    EXPECT_EQ(startup->param, "");
}

TEST_F(CZPKXMLLoaderTest, StartupIgnoresOtherAttributesAndContent) {
    const auto startup =
        loadStartup("<s exec='x' PARAM='y' Exec='$Data$/Setup &amp; more' Other='z'>t<s Param='deep'/></s>");
    ASSERT_NE(startup, nullptr);
    EXPECT_EQ(startup->exec, "$Data$/Setup & more");
    EXPECT_EQ(startup->param, "");
}

TEST_F(CZPKXMLLoaderTest, LanguagesKeepTheirOrder) {
    const auto languages = loadLanguages(
        "<L FallBackCode='en' x='1'>\n <Language Code='ja'/>\n t <Other Code='no'/>\n"
        " <Language x='2' Code='en'><Language Code='deep'/></Language><Language Code=''/>\n</L>");
    ASSERT_NE(languages, nullptr);
    EXPECT_EQ(languages->fallBackCode, "en");
    ASSERT_EQ(languages->languages.size(), 3u);
    EXPECT_EQ(languages->languages[0]->code, "ja");
    EXPECT_EQ(languages->languages[1]->code, "en");
    EXPECT_EQ(languages->languages[2]->code, "");
}

TEST_F(CZPKXMLLoaderTest, LanguagesMayFallBackOnNoLanguage) {
    const auto languages = loadLanguages("<Languages FallBackCode=''><Language Code='ja'/></Languages>");
    ASSERT_NE(languages, nullptr);
    EXPECT_EQ(languages->fallBackCode, "");
    EXPECT_EQ(languages->languages.size(), 1u);
}

TEST_F(CZPKXMLLoaderTest, LanguagesRootWithOnlyWhiteSpaceHasAnEmptyList) {
    const auto languages = loadLanguages("<Languages FallBackCode='en'>\n</Languages>");
    ASSERT_NE(languages, nullptr);
    EXPECT_EQ(languages->fallBackCode, "en");
    EXPECT_TRUE(languages->languages.empty());
}

TEST_F(CZPKXMLLoaderTest, LanguageOneLevelDeeperIsNotSeen) {
    const auto languages =
        loadLanguages("<Languages FallBackCode='en'><Group><Language Code='ja'/></Group></Languages>");
    ASSERT_NE(languages, nullptr);
    EXPECT_TRUE(languages->languages.empty());
}

struct FailingLanguages {
    const char* name;
    const char* xml;
};

void PrintTo(const FailingLanguages& row, std::ostream* out) {
    *out << row.xml;
}

class LanguagesFailureTest : public CZPKXMLLoaderTest,
                             public ::testing::WithParamInterface<FailingLanguages> {};

TEST_P(LanguagesFailureTest, GivesAnEmptyHolderAndFinalizesTheParser) {
    EXPECT_EQ(loadLanguages(GetParam().xml), nullptr);
    EXPECT_TRUE(isFinalized);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, LanguagesFailureTest,
    ::testing::Values(
        FailingLanguages{"EmptyRoot", "<Languages FallBackCode='en'/>"},
        FailingLanguages{"EmptyRootInTheLongForm", "<Languages FallBackCode='en'></Languages>"},
        FailingLanguages{"RootWithOnlyAComment", "<Languages FallBackCode='en'><!-- c --></Languages>"},
        FailingLanguages{"RootWithoutAttributes", "<Languages><Language Code='en'/></Languages>"},
        FailingLanguages{"RootWithoutFallBackCode", "<Languages x='en'><Language Code='en'/></Languages>"},
        FailingLanguages{"FallBackCodeInOtherCapitals",
                         "<Languages FallbackCode='en'><Language Code='en'/></Languages>"},
        FailingLanguages{"LanguageWithoutAttributes",
                         "<Languages FallBackCode='en'><Language Code='a'/><Language/></Languages>"},
        FailingLanguages{"LanguageWithoutCode",
                         "<Languages FallBackCode='en'><Language Name='en'/></Languages>"},
        FailingLanguages{"CodeInOtherCapitals",
                         "<Languages FallBackCode='en'><Language code='en'/></Languages>"},
        FailingLanguages{"Malformed", "<Languages FallBackCode='en'><Language Code='en'></Languages>"},
        FailingLanguages{"Empty", ""}),
    [](const auto& row) { return row.param.name; });

TEST_F(CZPKXMLLoaderTest, ConditionRootMayBeEmpty) {
    const auto info = loadCondition("<anything/>");
    ASSERT_NE(info, nullptr);
    EXPECT_EQ(info->xmlVersion, "");
    EXPECT_EQ(info->conditions, nullptr);
    EXPECT_EQ(info->targetItems, nullptr);
}

template <typename Entry>
std::string joined(const std::vector<std::unique_ptr<Entry>>& entries, std::string Entry::*text) {
    std::string joined;
    for (const auto& entry : entries) {
        joined += *entry.*text + ";";
    }
    return joined;
}

TEST_F(CZPKXMLLoaderTest, ConditionListsKeepTheirOrder) {
    const auto info = loadCondition(
        "<UpdateInfo XmlVersion='1.0' x='y'>\n<Conditions x='y'>"
        "<Disc FilePath='d1'/><Registry KeyName='r1'/><UIMLog Signature='u1' KeyName='no'/>\n"
        "<UninstallXml AppName='x1'/><!-- c --><Registry KeyName='r2'/><Unknown KeyName='no'/>"
        "<UIMLog Signature='u2'><UIMLog Signature='deep'/></UIMLog><Disc FilePath='d2'/>"
        "<UninstallXml AppName='x2'/></Conditions>\n"
        "<TargetItems><ItemInfo DisplayName='i1'/>t<ItemInfo/><Registry KeyName='no'/>"
        "<ItemInfo DisplayName='i2'/></TargetItems>\n</UpdateInfo>");
    ASSERT_NE(info, nullptr);
    EXPECT_EQ(info->xmlVersion, "1.0");
    ASSERT_NE(info->conditions, nullptr);
    EXPECT_EQ(joined(info->conditions->registries, &CRegistryType::keyName), "r1;r2;");
    EXPECT_EQ(joined(info->conditions->uimLogs, &CUIMLogType::signature), "u1;u2;");
    EXPECT_EQ(joined(info->conditions->uninstallXmls, &CUninstallXMLType::appName), "x1;x2;");
    EXPECT_EQ(joined(info->conditions->discs, &CDiscType::filePath), "d1;d2;");
    ASSERT_NE(info->targetItems, nullptr);
    EXPECT_EQ(info->targetItems->GetDisplayNameList(), (std::vector<std::string>{"i1", "", "i2"}));
}

TEST_F(CZPKXMLLoaderTest, LastConditionsAndTargetItemsWin) {
    const auto info = loadCondition(
        "<u><TargetItems><ItemInfo DisplayName='old'/></TargetItems>"
        "<Conditions><Disc FilePath='old'/><UIMLog Signature='old'/></Conditions>"
        "<TargetItems><ItemInfo DisplayName='new'/></TargetItems>"
        "<Conditions><Disc FilePath='new'/></Conditions></u>");
    ASSERT_NE(info, nullptr);
    EXPECT_EQ(joined(info->conditions->discs, &CDiscType::filePath), "new;");
    EXPECT_TRUE(info->conditions->uimLogs.empty());
    EXPECT_EQ(info->targetItems->GetDisplayNameList(), std::vector<std::string>{"new"});
}

TEST_F(CZPKXMLLoaderTest, EntriesCountOnlyUnderTheirOwnParent) {
    const auto info = loadCondition(
        "<u><ItemInfo DisplayName='no'/><Disc FilePath='no'/>"
        "<TargetItems><Registry KeyName='no'/><Conditions/></TargetItems>"
        "<Conditions><ItemInfo DisplayName='no'/><Disc><Disc FilePath='deep'/></Disc></Conditions></u>");
    ASSERT_NE(info, nullptr);
    EXPECT_TRUE(info->conditions->registries.empty());
    EXPECT_EQ(joined(info->conditions->discs, &CDiscType::filePath), ";");
    EXPECT_TRUE(info->targetItems->items.empty());
}

TEST_F(CZPKXMLLoaderTest, DiscWithoutAPathIsAnEntryWithAnEmptyPath) {
    const auto info = loadCondition("<u><Conditions><Disc/></Conditions></u>");
    ASSERT_NE(info, nullptr);
    EXPECT_EQ(joined(info->conditions->discs, &CDiscType::filePath), ";");
}

TEST_F(CZPKXMLLoaderTest, NamesInOtherCapitalsAreNotRecognised) {
    const auto info = loadCondition(
        "<u><conditions/><Targetitems/><Conditions><UimLog Signature='s'/><UIMLOG Signature='s'/>"
        "<UninstallXML AppName='a'/><uninstallXml AppName='a'/><registry KeyName='k'/>"
        "<UIMLog signature='s'/></Conditions></u>");
    ASSERT_NE(info, nullptr);
    EXPECT_EQ(joined(info->conditions->uimLogs, &CUIMLogType::signature), ";");
    EXPECT_TRUE(info->conditions->uninstallXmls.empty());
    EXPECT_TRUE(info->conditions->registries.empty());
    EXPECT_EQ(info->targetItems, nullptr);
}

TEST_F(CZPKXMLLoaderTest, TargetItemsWithoutItemsGiveAnEmptyList) {
    const auto info = loadCondition("<u><TargetItems/></u>");
    ASSERT_NE(info, nullptr);
    ASSERT_NE(info->targetItems, nullptr);
    EXPECT_TRUE(info->targetItems->GetDisplayNameList().empty());
}

TEST_F(CZPKXMLLoaderTest, ThousandsOfEntriesLoad) {
    std::string xml = "<u><Conditions>";
    for (int index = 0; index < 20000; ++index) {
        xml += "<UIMLog Signature='" + std::to_string(index) + "'/>";
    }
    const auto info = loadCondition(xml + "</Conditions></u>");
    ASSERT_NE(info, nullptr);
    ASSERT_EQ(info->conditions->uimLogs.size(), 20000u);
    EXPECT_EQ(info->conditions->uimLogs[19999]->signature, "19999");
}

TEST_F(CZPKXMLLoaderTest, SuccessFinalizesTheParserForEachFile) {
    delete CZPKXMLLoader::LoadConditionXML(file("<u/>"));
    EXPECT_TRUE(isFinalized);
    WatchedParser::install(new WatchedParser(isFinalized));
    delete CZPKXMLLoader::LoadStartupXML(file("<s/>"));
    EXPECT_TRUE(isFinalized);
    WatchedParser::install(new WatchedParser(isFinalized));
    EXPECT_NE(loadLanguages("<l FallBackCode='en'> </l>"), nullptr);
    EXPECT_TRUE(isFinalized);
}

TEST_F(CZPKXMLLoaderTest, FailureFinalizesTheParserOnlyForLanguages) {
    EXPECT_EQ(loadCondition("<u>"), nullptr);
    EXPECT_FALSE(isFinalized);
    EXPECT_EQ(loadStartup("<s>"), nullptr);
    EXPECT_FALSE(isFinalized);
    EXPECT_EQ(loadLanguages("<l>"), nullptr);
    EXPECT_TRUE(isFinalized);
}

TEST_F(CZPKXMLLoaderTest, MissingFileFailsLikeAMalformedOne) {
    const std::string missing = folder / "missing.xml";
    EXPECT_EQ(CZPKXMLLoader::LoadConditionXML(missing), nullptr);
    EXPECT_EQ(CZPKXMLLoader::LoadStartupXML(missing), nullptr);
    EXPECT_EQ(CZPKXMLLoader::LoadStartupXML(folder.path()), nullptr);
    EXPECT_FALSE(isFinalized);
    EXPECT_EQ(CZPKXMLLoader::LoadLanguagesXML(missing), nullptr);
    EXPECT_TRUE(isFinalized);
}

TEST_F(CZPKXMLLoaderTest, WhatIsNoRegularFileFailsAndIsNotWaitedFor) {
    ::alarm(60);
    ASSERT_EQ(::mkfifo((folder / "fifo").c_str(), 0600), 0);
    ASSERT_EQ(::symlink("fifo", (folder / "link to a fifo").c_str()), 0);
    ASSERT_EQ(::symlink("/dev/zero", (folder / "link to a device").c_str()), 0);
    for (const std::string& path :
         {folder / "fifo", folder / "link to a fifo", folder / "link to a device", folder.path()}) {
        EXPECT_EQ(CZPKXMLLoader::LoadConditionXML(path), nullptr) << path;
        EXPECT_EQ(CZPKXMLLoader::LoadStartupXML(path), nullptr) << path;
        EXPECT_EQ(CZPKXMLLoader::LoadLanguagesXML(path), nullptr) << path;
    }
    ::alarm(0);
}

/// A description of `size` bytes that every loader takes.
std::string descriptionOfSize(std::size_t size) {
    const std::string start = "<d FallBackCode='en'> <!--";
    const std::string end = "--></d>";
    return start + std::string(size - start.size() - end.size(), '.') + end;
}

TEST_F(CZPKXMLLoaderTest, DescriptionOfTheLargestSizeLoads) {
    const std::string path = file(descriptionOfSize(CZPKXMLLoader::kLargestDescription));
    EXPECT_NE(std::unique_ptr<CUpdateInfoType>(CZPKXMLLoader::LoadConditionXML(path)), nullptr);
    EXPECT_NE(std::unique_ptr<CStartupType>(CZPKXMLLoader::LoadStartupXML(path)), nullptr);
    EXPECT_NE(CZPKXMLLoader::LoadLanguagesXML(path), nullptr);
}

TEST_F(CZPKXMLLoaderTest, DescriptionOneByteLargerFailsLikeAMalformedOne) {
    const std::string path = file(descriptionOfSize(CZPKXMLLoader::kLargestDescription + 1));
    EXPECT_EQ(CZPKXMLLoader::LoadConditionXML(path), nullptr);
    EXPECT_EQ(CZPKXMLLoader::LoadStartupXML(path), nullptr);
    EXPECT_FALSE(isFinalized);
    EXPECT_EQ(CZPKXMLLoader::LoadLanguagesXML(path), nullptr);
    EXPECT_TRUE(isFinalized);
}

TEST_F(CZPKXMLLoaderTest, DocumentWithoutARootFails) {
    WatchedParser::install(new RootlessParser(isFinalized));
    EXPECT_EQ(CZPKXMLLoader::LoadConditionXML("any"), nullptr);
    EXPECT_EQ(CZPKXMLLoader::LoadStartupXML("any"), nullptr);
    EXPECT_FALSE(isFinalized);
    EXPECT_EQ(CZPKXMLLoader::LoadLanguagesXML("any"), nullptr);
    EXPECT_TRUE(isFinalized);
}

TEST_F(CZPKXMLLoaderTest, ExceptionOfTheParserIsCaught) {
    WatchedParser::install(new ThrowingParser(isFinalized));
    EXPECT_EQ(CZPKXMLLoader::LoadConditionXML("any"), nullptr);
    EXPECT_EQ(CZPKXMLLoader::LoadStartupXML("any"), nullptr);
    EXPECT_FALSE(isFinalized);
    EXPECT_EQ(CZPKXMLLoader::LoadLanguagesXML("any"), nullptr);
    EXPECT_TRUE(isFinalized);
}

TEST_F(CZPKXMLLoaderTest, TreeIsDeletedBeforeTheParser) {
    std::vector<std::string> events;
    WatchedParser::install(new CountingParser(isFinalized, events));
    delete CZPKXMLLoader::LoadStartupXML("the path");
    EXPECT_EQ(events, (std::vector<std::string>{"the path", "tree deleted", "parser deleted"}));
    events.clear();
    WatchedParser::install(new CountingParser(isFinalized, events));
    EXPECT_EQ(CZPKXMLLoader::LoadLanguagesXML("the path"), nullptr);
    EXPECT_EQ(events, (std::vector<std::string>{"the path", "tree deleted", "parser deleted"}));
}

}  // namespace
