// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

// The description classes by themselves: null elements, attributes in odd orders, ownership.

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Common/CExpatXMLParser.h"
#include "Common/CXMLAttribute.h"
#include "Common/CXMLText.h"
#include "Common/CZPKError.h"
#include "Description/CZPKXMLLoader.h"
#include "Tests/Support/FailingAllocation.h"
#include "Tests/Support/TemporaryFolder.h"

namespace {

using namespace varno_zpk;

const char* const kLongText = "a text that is too long to be kept inside the string object";

std::string statusOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const CZPKError& error) {
        return error.GetStatus();
    }
    return "nothing raised";
}

TEST(DescriptionTypesTest, NullElementRaisesTheUndefinedStatus) {
    const std::string undefined = "Undefined Error occurs.";
    EXPECT_EQ(statusOf([] { CUpdateInfoType description(nullptr); }), undefined);
    EXPECT_EQ(statusOf([] { CConditionsType description(nullptr); }), undefined);
    EXPECT_EQ(statusOf([] { CTargetItemsType description(nullptr); }), undefined);
    EXPECT_EQ(statusOf([] { CRegistryType description(nullptr); }), undefined);
    EXPECT_EQ(statusOf([] { CUIMLogType description(nullptr); }), undefined);
    EXPECT_EQ(statusOf([] { CUninstallXMLType description(nullptr); }), undefined);
    EXPECT_EQ(statusOf([] { CDiscType description(nullptr); }), undefined);
    EXPECT_EQ(statusOf([] { CItemInfoType description(nullptr); }), undefined);
    EXPECT_EQ(statusOf([] { CStartupType description(nullptr); }), undefined);
}

TEST(DescriptionTypesTest, IncompleteLanguagesRaiseTheirStatus) {
    const std::string failed = "Failed load Languages.xml";
    CXMLElement root;
    root.InitWithName("Languages");
    EXPECT_EQ(statusOf([&] { CLanguageType description(root); }), failed);
    EXPECT_EQ(statusOf([&] { CLanguagesType description(root); }), failed);
    root.AddAttribute(CXMLNode::CreateAttributeWithNameWithStringValue("FallBackCode", "en"));
    EXPECT_EQ(statusOf([&] { CLanguagesType description(root); }), failed);
    root.AddChild(CXMLNode::CreateElementWithName("Language"));
    EXPECT_EQ(statusOf([&] { CLanguagesType description(root); }), failed);
    root.RemoveAllChildren();
    root.AddChild(CXMLNode::CreateTextWithStringValue(""));
    EXPECT_EQ(statusOf([&] { CLanguagesType description(root); }), "nothing raised");
}

/// An element with two attributes of one name, as the tree itself never makes one.
std::unique_ptr<CXMLElement> elementWithAttributeTwice(const char* name) {
    std::unique_ptr<CXMLElement> element(CXMLNode::CreateElementWithName("e"));
    for (const char* value : {"first", "last"}) {
        element->AddNewAttribute(
            std::unique_ptr<CXMLAttribute>(CXMLNode::CreateAttributeWithNameWithStringValue(name, value)));
    }
    return element;
}

TEST(DescriptionTypesTest, LastOfEqualAttributesWins) {
    EXPECT_EQ(CStartupType(elementWithAttributeTwice("Exec").get()).exec, "last");
    EXPECT_EQ(CStartupType(elementWithAttributeTwice("Param").get()).param, "last");
    EXPECT_EQ(CRegistryType(elementWithAttributeTwice("KeyName").get()).keyName, "last");
    EXPECT_EQ(CUIMLogType(elementWithAttributeTwice("Signature").get()).signature, "last");
    EXPECT_EQ(CUninstallXMLType(elementWithAttributeTwice("AppName").get()).appName, "last");
    EXPECT_EQ(CDiscType(elementWithAttributeTwice("FilePath").get()).filePath, "last");
    EXPECT_EQ(CItemInfoType(elementWithAttributeTwice("DisplayName").get()).displayName, "last");
    EXPECT_EQ(CUpdateInfoType(elementWithAttributeTwice("XmlVersion").get()).xmlVersion, "last");
    EXPECT_EQ(CLanguageType(*elementWithAttributeTwice("Code")).code, "last");
}

const std::string kConditionXml =
    "<u XmlVersion='" + std::string(kLongText) +
    "'><TargetItems><ItemInfo DisplayName='i'/></TargetItems><Conditions><Disc FilePath='d1'/>"
    "<UninstallXml AppName='x1'/><UIMLog Signature='u1'/><Registry KeyName='r1'/><Registry KeyName='r2'/>"
    "<UIMLog Signature='u2'/><UninstallXml AppName='x2'/><Disc FilePath='d2'/></Conditions></u>";

/// Those of `deletions` that are among `objects`, in order.
std::vector<const void*> among(const std::vector<const void*>& deletions,
                               const std::vector<const void*>& objects) {
    std::vector<const void*> found;
    std::copy_if(deletions.begin(), deletions.end(), std::back_inserter(found), [&](const void* deleted) {
        return std::find(objects.begin(), objects.end(), deleted) != objects.end();
    });
    return found;
}

TEST(DescriptionOwnershipTest, UpdateInfoDeletesTargetItemsThenConditionsListByList) {
    const auto document = CExpatXMLParser::CreateCXMLNodeWithText(kConditionXml);
    auto info = std::make_unique<CUpdateInfoType>(document->GetRootElement());
    const CConditionsType& conditions = *info->conditions;
    const std::vector<const void*> expected = {
        info->targetItems.get(),           conditions.registries[0].get(),
        conditions.registries[1].get(),    conditions.uimLogs[0].get(),
        conditions.uimLogs[1].get(),       conditions.uninstallXmls[0].get(),
        conditions.uninstallXmls[1].get(), conditions.discs[0].get(),
        conditions.discs[1].get(),         info->conditions.get()};
    const std::unique_ptr<CItemInfoType> item(info->targetItems->items[0]);
    const auto deletions = zpk_test::recordDeletions([&] { info.reset(); });
    EXPECT_EQ(among(deletions, expected), expected);
}

TEST(DescriptionOwnershipTest, TargetItemsDoNotDeleteTheirItems) {
    const auto document = CExpatXMLParser::CreateCXMLNodeWithText("<t><ItemInfo DisplayName='a'/></t>");
    auto targetItems = std::make_unique<CTargetItemsType>(document->GetRootElement());
    const std::unique_ptr<CItemInfoType> item(targetItems->items[0]);
    const auto deletions = zpk_test::recordDeletions([&] { targetItems.reset(); });
    EXPECT_TRUE(among(deletions, {item.get()}).empty());
    EXPECT_EQ(item->displayName, "a");
}

TEST(DescriptionOwnershipTest, EarlierConditionsAndTargetItemsAreDeleted) {
    const std::string both = "<Conditions><Disc/></Conditions><TargetItems/>";
    const auto document = CExpatXMLParser::CreateCXMLNodeWithText("<u>" + both + both + "</u>");
    std::unique_ptr<CUpdateInfoType> info;
    const auto deletions = zpk_test::recordDeletions(
        [&] { info = std::make_unique<CUpdateInfoType>(document->GetRootElement()); });
    EXPECT_EQ(info->conditions->discs.size(), 1u);
    // The first conditions' disc and list, the first conditions, the first target items.
    EXPECT_EQ(deletions.size(), 4u);
}

TEST(DescriptionOwnershipTest, LanguagesAreDeletedInOrder) {
    const auto document = CExpatXMLParser::CreateCXMLNodeWithText(
        "<l FallBackCode='en'><Language Code='a'/><Language Code='b'/><Language Code='c'/></l>");
    auto languages = std::make_unique<CLanguagesType>(*document->GetRootElement());
    std::vector<const void*> expected;
    for (const auto& language : languages->languages) {
        expected.push_back(language.get());
    }
    const auto deletions = zpk_test::recordDeletions([&] { languages.reset(); });
    EXPECT_EQ(among(deletions, expected), expected);
}

TEST(DescriptionAllocationTest, HalfBuiltDescriptionsLeakNothing) {
    const std::string text(kLongText);
    const auto condition = CExpatXMLParser::CreateCXMLNodeWithText(
        "<u XmlVersion='" + text + "'><Conditions><Disc FilePath='" + text + "'/><UIMLog Signature='" + text +
        "'/><UIMLog Signature='" + text + "'/></Conditions><Conditions><Registry KeyName='" + text +
        "'/></Conditions><TargetItems/></u>");
    const std::size_t conditionFailures = zpk_test::runWithEachAllocationFailing(
        [&] { CUpdateInfoType description(condition->GetRootElement()); });
    EXPECT_GE(conditionFailures, 13u);
    const auto languages = CExpatXMLParser::CreateCXMLNodeWithText(
        "<l FallBackCode='" + text + "'><Language Code='" + text + "'/><Language Code='" + text + "'/></l>");
    const std::size_t languagesFailures = zpk_test::runWithEachAllocationFailing(
        [&] { CLanguagesType description(*languages->GetRootElement()); });
    EXPECT_GE(languagesFailures, 7u);
}

TEST(DescriptionAllocationTest, ItemThatCannotBeAppendedIsDeleted) {
    const auto document = CExpatXMLParser::CreateCXMLNodeWithText("<t><ItemInfo DisplayName='" +
                                                                  std::string(kLongText) + "'/></t>");
    const std::size_t failures = zpk_test::runWithEachAllocationFailing([&] {
        const CTargetItemsType targetItems(document->GetRootElement());
        const std::unique_ptr<CItemInfoType> item(targetItems.items[0]);
    });
    // The item, its text, the list.
    EXPECT_EQ(failures, 3u);
}

TEST(DescriptionAllocationTest, LoaderGivesNothingWhenMemoryIsExhausted) {
    const zpk_test::TemporaryFolder folder;
    const std::string condition = folder / "condition.xml";
    const std::string languages = folder / "languages.xml";
    zpk_test::writeFile(condition, kConditionXml);
    zpk_test::writeFile(languages, "<l FallBackCode='en'><Language Code='a'/></l>");
    bool isLoaded = false;
    const std::size_t conditionFailures = zpk_test::runWithEachAllocationFailing([&] {
        ASSERT_FALSE(isLoaded);
        const std::unique_ptr<CUpdateInfoType> info(CZPKXMLLoader::LoadConditionXML(condition));
        isLoaded = info != nullptr;
    });
    EXPECT_TRUE(isLoaded);
    EXPECT_GE(conditionFailures, 40u);
    isLoaded = false;
    const std::size_t languagesFailures = zpk_test::runWithEachAllocationFailing([&] {
        ASSERT_FALSE(isLoaded);
        isLoaded = CZPKXMLLoader::LoadLanguagesXML(languages) != nullptr;
    });
    EXPECT_TRUE(isLoaded);
    EXPECT_GE(languagesFailures, 12u);
    CXMLParser::Finalize();
}

}  // namespace
