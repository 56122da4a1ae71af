// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Common/CVariableManager.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "Tests/Common/AssertionReport.h"
#include "Tests/Common/MapFinder.h"
#include "Tests/Support/CapturedStreams.h"
#include "Tests/Support/VirtualSlot.h"

using varno_zpk::CAutoFinalizeObject;
using varno_zpk::CVariableManager;
using varno_zpk::CVariableValueFinder;
using zpk_test::assertionReport;
using zpk_test::captureStreams;
using zpk_test::MapFinder;

namespace {

const char* const kSource = "Common/CVariableManager.cpp";
const char* const kLookup =
    "const char* varno_zpk::CVariableManager::FindValueForVariable(const std::string&, std::string&, "
    "varno_zpk::IVariableValueFinder*)";

/// Gives a text of its own and leaves the scratch string alone.
class OwnTextFinder : public CVariableValueFinder {
public:
    const char* FindValue(const std::string&, std::string&) override { return "own"; }
};

/// Asks the manager itself for its value.
class ExpandingFinder : public CVariableValueFinder {
public:
    const char* FindValue(const std::string&, std::string& value) override {
        MapFinder inner{{"$I$", "inner"}};
        value = CVariableManager::GetManager()->ExpandAndReturnTempString("<$I$>", &inner);
        return value.c_str();
    }
};

class ThrowingFinder : public CVariableValueFinder {
public:
    const char* FindValue(const std::string&, std::string&) override { throw 1; }
};

CVariableManager& manager() {
    return *CVariableManager::GetManager();
}

}  // namespace

TEST(VariableManagerTest, GetManagerMakesOneInstance) {
    CVariableManager* manager = CVariableManager::GetManager();
    ASSERT_NE(manager, nullptr);
    EXPECT_EQ(CVariableManager::GetManager(), manager);
}

TEST(VariableManagerTest, IsASingletonThatAddsNoVirtualOperation) {
    EXPECT_TRUE((std::is_convertible_v<CVariableManager*, CAutoFinalizeObject*>));
    EXPECT_FALSE(std::is_copy_constructible_v<CVariableManager>);
    EXPECT_FALSE(std::is_copy_assignable_v<CVariableManager>);
    EXPECT_EQ(sizeof(CVariableManager), sizeof(CAutoFinalizeObject) + sizeof(std::string));
    EXPECT_EQ(zpk_test::virtualSlot(&CVariableManager::AutoFinalizeObjectFinalize), 3u);
}

TEST(VariableManagerTest, DestroyedManagerIsMadeAgain) {
    delete CVariableManager::GetManager();
    std::string out;
    EXPECT_STREQ(CVariableManager::GetManager()->Expand("again", out), "again");
    // A second destruction finds the new manager registered.
    delete CVariableManager::GetManager();
}

TEST(VariableManagerTest, IsDestroyedByTheFinalizationOfAllSingletons) {
    EXPECT_DEATH(
        {
            CVariableManager::GetManager();
            CAutoFinalizeObject::FinalizeAllObjects();
            // The old manager is gone, so a new one is tried, and it is too late for that.
            CVariableManager::GetManager();
        },
        testing::MatchesRegex(assertionReport("Common/CAutoFinalizeObject.cpp",
                                              "varno_zpk::CAutoFinalizeObject::CAutoFinalizeObject()",
                                              "!s_AllObjectsFinalized")));
}

TEST(VariableManagerTest, SecondManagerAborts) {
    EXPECT_DEATH(
        {
            CVariableManager::GetManager();
            CVariableManager second;
        },
        testing::MatchesRegex(
            assertionReport(kSource, "varno_zpk::CVariableManager::CVariableManager()", "s_Manager==NULL")));
}

TEST(VariableManagerTest, DestructionOfAManagerThatIsNotTheSingleOneAborts) {
    EXPECT_DEATH(
        {
            delete CVariableManager::GetManager();
            CVariableManager unregistered;
        },
        testing::MatchesRegex(assertionReport(
            kSource, "virtual varno_zpk::CVariableManager::~CVariableManager()", "s_Manager==this")));
}

TEST(VariableManagerTest, TextWithoutAPairIsGivenBackItself) {
    MapFinder finder{};
    const char* const texts[] = {"", "abc", "a$b", "$", "$a", "a$", "\xFF\xFE"};
    for (const char* text : texts) {
        std::string out("untouched");
        EXPECT_EQ(manager().ExpandVariablesInString(text, out, nullptr), text) << text;
        EXPECT_EQ(manager().ExpandVariablesInString(text, out, &finder), text) << text;
        EXPECT_EQ(out, "untouched") << text;
        EXPECT_EQ(manager().ExpandAndReturnTempString(text), text) << text;
        EXPECT_EQ(manager().ExpandAndReturnTempString(text, &finder), text) << text;
    }
    EXPECT_TRUE(finder.asked.empty());
}

TEST(VariableManagerTest, ReferencesAreReplaced) {
    const struct {
        const char* text;
        const char* expanded;
    } rows[] = {
        {"x$A$y$B$z", "x1y2z"},
        {"x$A$y$", "x1y$"},
        {"$A$", "1"},
        {"$A$$B$", "12"},
        {"$$", "empty"},
        {"$$$", "empty$"},
        {"$$$$", "emptyempty"},
        {"$A$A$B$", "1A2"},  // the middle "A" stands between two references
        {"a$ $b", "aspaceb"},
        {"$V$A$B$", "$A$A2"},  // a value that looks like a reference is not scanned
        {"$E$", ""},
        {"\xE6\x97\xA5$A$\xE6\x9C\xAC",
         "\xE6\x97\xA5"
         "1\xE6\x9C\xAC"},
    };
    for (const auto& row : rows) {
        MapFinder finder(
            {{"$A$", "1"}, {"$B$", "2"}, {"$$", "empty"}, {"$ $", "space"}, {"$V$", "$A$"}, {"$E$", ""}});
        std::string out("earlier");
        captureStreams([&] {
            const char* expanded = manager().ExpandVariablesInString(row.text, out, &finder);
            EXPECT_EQ(expanded, out.c_str()) << row.text;
        });
        EXPECT_EQ(out, row.expanded) << row.text;
    }
}

TEST(VariableManagerTest, FinderIsAskedOnceForEachReferenceInOrder) {
    MapFinder finder{{"$B$", "2"}, {"$A$", "1"}, {"$$", ""}};
    std::string out;
    captureStreams([&] { manager().ExpandVariablesInString("$B$ $A$$$ $B$", out, &finder); });
    EXPECT_EQ(finder.asked, (std::vector<std::string>{"$B$", "$A$", "$$", "$B$"}));
}

TEST(VariableManagerTest, WithoutAFinderReferencesStayInANewCopy) {
    const char* const texts[] = {"x$A$y", "$$", "$A$$B$c$", "$A$b$C"};
    for (const char* text : texts) {
        std::string out("earlier");
        const auto captured = captureStreams([&] {
            const char* expanded = manager().ExpandVariablesInString(text, out, nullptr);
            EXPECT_EQ(expanded, out.c_str());
            EXPECT_NE(expanded, text);
        });
        EXPECT_EQ(out, text);
        EXPECT_EQ(captured.standardError, "");
        EXPECT_EQ(captured.standardOutput, "");
    }
}

TEST(VariableManagerTest, EveryLookupIsToldOnStandardError) {
    MapFinder finder{{"$A$", "1"}, {"$$", ""}};
    std::string out;
    const auto captured =
        captureStreams([&] { manager().ExpandVariablesInString("x$A$y$$z", out, &finder); });
    EXPECT_EQ(captured.standardError, "Variable $A$='1'.\nVariable $$=''.\n");
    EXPECT_EQ(captured.standardOutput, "");
}

TEST(VariableManagerTest, UnknownVariableIsToldAndStopsTheProgram) {
    MapFinder finder{{"$A$", "1"}};
    EXPECT_DEATH(
        {
            std::string out;
            manager().ExpandVariablesInString("x$A$y$B$", out, &finder);
        },
        testing::MatchesRegex(zpk_test::regexFor("Variable $A$='1'.\nVariable $B$='(null)'.\n") +
                              assertionReport(kSource, kLookup, "found != nullptr")));
}

TEST(VariableManagerTest, ExpandAlwaysFillsTheOutput) {
    const char* const texts[] = {"", "abc", "a$b", "x$A$y"};
    for (const char* text : texts) {
        std::string out("earlier");
        const char* expanded = manager().Expand(text, out);
        EXPECT_EQ(expanded, out.c_str());
        EXPECT_EQ(out, text);
    }
}

TEST(VariableManagerTest, ExpandUsesTheDefaultFinder) {
    MapFinder finder{{"$A$", "1"}};
    CVariableValueFinder::SetDefaultFinder(&finder);
    std::string out;
    captureStreams([&] { EXPECT_STREQ(manager().Expand("x$A$y", out), "x1y"); });
    EXPECT_EQ(out, "x1y");
}

TEST(VariableManagerTest, TempStringUsesTheDefaultFinderOrTheOneGiven) {
    MapFinder byDefault{{"$A$", "default"}};
    MapFinder given{{"$A$", "given"}};
    CVariableValueFinder::SetDefaultFinder(&byDefault);
    captureStreams([&] {
        EXPECT_STREQ(manager().ExpandAndReturnTempString("$A$"), "default");
        EXPECT_STREQ(manager().ExpandAndReturnTempString("$A$", &given), "given");
        EXPECT_STREQ(manager().ExpandAndReturnTempString("$A$", nullptr), "$A$");
    });
}

TEST(VariableManagerTest, TempStringStaysWhenTheNextTextHasNothingToExpand) {
    const char* expanded = manager().ExpandAndReturnTempString("x$A$y");
    manager().ExpandAndReturnTempString("abc");
    EXPECT_STREQ(expanded, "x$A$y");
}

TEST(VariableManagerTest, ResultMayBeExpandedAgain) {
    const std::string longText = "x$A$" + std::string(1000, 'y') + "$B$z";
    const char* first = manager().ExpandAndReturnTempString(longText.c_str());
    EXPECT_EQ(manager().ExpandAndReturnTempString(first), longText);

    MapFinder finder{{"$A$", "1"}, {"$B$", "2"}};
    std::string out(longText);
    captureStreams([&] { manager().ExpandVariablesInString(out.c_str(), out, &finder); });
    EXPECT_EQ(out, "x1" + std::string(1000, 'y') + "2z");

    out = "prefix$b";
    EXPECT_STREQ(manager().Expand(out.c_str() + 3, out), "fix$b");
}

TEST(VariableManagerTest, FinderMayGiveATextOfItsOwn) {
    OwnTextFinder finder;
    std::string out;
    captureStreams([&] { EXPECT_STREQ(manager().ExpandVariablesInString("<$A$>", out, &finder), "<own>"); });
}

TEST(VariableManagerTest, FinderMayUseTheManager) {
    ExpandingFinder finder;
    captureStreams([&] {
        EXPECT_STREQ(manager().ExpandAndReturnTempString("a$X$b$Y$c", &finder), "a<inner>b<inner>c");
    });
}

TEST(VariableManagerTest, FinderThatThrowsLeavesTheOutput) {
    ThrowingFinder finder;
    std::string out("earlier");
    EXPECT_THROW(manager().ExpandVariablesInString("$A$", out, &finder), int);
    EXPECT_EQ(out, "earlier");
}

TEST(VariableManagerTest, FindValueWithoutAFinderIsTheReferenceItself) {
    const std::string reference("$Name$");
    std::string value("scratch");
    const auto captured = captureStreams(
        [&] { EXPECT_EQ(manager().FindValueForVariable(reference, value, nullptr), reference.c_str()); });
    EXPECT_EQ(value, "scratch");
    EXPECT_EQ(captured.standardError, "");
}

TEST(VariableManagerTest, FindValueAsksTheFinder) {
    MapFinder finder{{"$Name$", "value"}};
    std::string value;
    const auto captured = captureStreams([&] {
        const char* found = manager().FindValueForVariable("$Name$", value, &finder);
        EXPECT_EQ(found, value.c_str());
    });
    EXPECT_EQ(value, "value");
    EXPECT_EQ(captured.standardError, "Variable $Name$='value'.\n");
}

TEST(VariableManagerTest, TraceOfALongValueIsCut) {
    const std::string value(std::size_t{1} << 20, 'v');
    const std::string name = "$" + std::string(5000, 'n') + "$";
    MapFinder finder{{name, value}};
    std::string out;
    const auto captured =
        captureStreams([&] { manager().ExpandVariablesInString(name.c_str(), out, &finder); });
    EXPECT_EQ(out, value);
    EXPECT_EQ(captured.standardError,
              "Variable $" + std::string(4095, 'n') + "...='" + std::string(4096, 'v') + "...'.\n");
}

TEST(VariableManagerTest, LongTextOfReferencesIsExpanded) {
    std::string text;
    for (int i = 0; i < 100000; ++i) {
        text += "a$X$";
    }
    std::string out;
    manager().ExpandVariablesInString(text.c_str(), out, nullptr);
    EXPECT_EQ(out, text);
}
