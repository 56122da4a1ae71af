// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

// What a translator can get wrong in the shipped tables and the eye does not see.

#include <gtest/gtest.h>
#include <iconv.h>

#include <algorithm>
#include <filesystem>
#include <optional>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "Common/CBaseObjectUtil.h"
#include "Common/CPlusUtil.h"
#include "Common/CResourceBundleStringElement.h"
#include "Common/CResourceBundleStringTableParser.h"
#include "Common/ZPKCoreStringDefine.h"
#include "Description/CLanguageType.h"
#include "Description/CLanguagesType.h"
#include "Description/CZPKXMLLoader.h"
#include "Tests/Support/CapturedStreams.h"
#include "Tests/Support/TemporaryFolder.h"

using namespace varno_zpk;

namespace {

const std::string kUilangFolder = ZPK_UILANG_FOLDER;
const std::string kBundleUilangFolder = ZPK_BUNDLE_UILANG_FOLDER;
const std::string kTableName = "/ZPKStringTable.def";

using Entries = std::vector<std::pair<std::string, std::string>>;

struct Table {
    std::string code;
    std::string bytes;
    std::string messages;
    int parseResult = -1;
    Entries entries;

    std::string text(const std::string& key) const {
        const auto entry =
            std::find_if(entries.begin(), entries.end(), [&](const auto& each) { return each.first == key; });
        return entry == entries.end() ? std::string() : entry->second;
    }
};

std::vector<std::string> languageFolders() {
    std::vector<std::string> codes;
    for (const auto& entry : std::filesystem::directory_iterator(kUilangFolder)) {
        if (entry.is_directory()) {
            codes.push_back(entry.path().filename().string());
        }
    }
    std::sort(codes.begin(), codes.end());
    return codes;
}

Table loadTable(const std::string& code) {
    Table table;
    table.code = code;
    const std::string path = kUilangFolder + "/" + code + kTableName;
    table.bytes = zpk_test::readFile(path);
    std::vector<CBaseObject*> elements;
    const auto captured = zpk_test::captureStreams(
        [&] { table.parseResult = CResourceBundleStringTableParser().Parse(path.c_str(), elements); });
    table.messages = captured.standardOutput + captured.standardError;
    for (CBaseObject* object : elements) {
        const auto* element = DOWN_CAST(CResourceBundleStringElement*, object);
        table.entries.emplace_back(element->GetKey(), element->GetValue());
    }
    CBaseObjectUtil::Destroy(elements);
    return table;
}

/// The code points of the text; nothing when it is not UTF-8.
std::optional<std::u32string> decode(const std::string& text) {
    const iconv_t converter = iconv_open("UTF-32LE", "UTF-8");
    std::string input = text;
    std::u32string points(text.size(), U'\0');
    char* from = input.data();
    size_t left = input.size();
    char* to = reinterpret_cast<char*>(points.data());
    size_t room = points.size() * sizeof(char32_t);
    const bool valid = iconv(converter, &from, &left, &to, &room) != static_cast<size_t>(-1) && left == 0;
    iconv_close(converter);
    points.resize(points.size() - room / sizeof(char32_t));
    return valid ? std::optional(points) : std::nullopt;
}

bool isForbiddenControl(char32_t point) {
    return (point < 0x20 && point != U'\n') || (point >= 0x7F && point < 0xA0);
}

/// Hebrew or Arabic.
bool isRightToLeftLetter(char32_t point) {
    return point >= 0x05D0 && point <= 0x064A;
}

size_t count(const std::string& text, const std::string& piece) {
    size_t count = 0;
    for (size_t at = text.find(piece); at != std::string::npos; at = text.find(piece, at + piece.size())) {
        ++count;
    }
    return count;
}

class StringTablesTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        for (const std::string& code : languageFolders()) {
            s_tables.push_back(loadTable(code));
        }
    }
    static void TearDownTestSuite() { s_tables.clear(); }

    void SetUp() override { ASSERT_FALSE(s_tables.empty()); }

    static const Table& tableOf(const std::string& code) {
        const auto found = std::find_if(s_tables.begin(), s_tables.end(),
                                        [&](const Table& table) { return table.code == code; });
        if (found == s_tables.end()) {
            throw std::runtime_error("no table " + code);
        }
        return *found;
    }

    static inline std::vector<Table> s_tables;
};

TEST_F(StringTablesTest, OfferedLanguagesAreTheFoldersEachOnce) {
    const auto description = CZPKXMLLoader::LoadLanguagesXML(kUilangFolder + "/Languages.xml");
    ASSERT_TRUE(description);
    std::vector<std::string> offered;
    for (const auto& language : description->languages) {
        offered.push_back(language->code);
    }
    ASSERT_FALSE(offered.empty());
    EXPECT_EQ(offered.front(), "en");
    std::sort(offered.begin(), offered.end());
    EXPECT_EQ(offered, languageFolders());
}

TEST_F(StringTablesTest, FallBackLanguageIsEnglish) {
    const auto description = CZPKXMLLoader::LoadLanguagesXML(kUilangFolder + "/Languages.xml");
    ASSERT_TRUE(description);
    EXPECT_EQ(description->fallBackCode, "en");
}

TEST_F(StringTablesTest, PromisedLanguagesAreThere) {
    const std::vector<std::string> folders = languageFolders();
    for (const char* code : {"en", "ja", "zh_CN", "zh_TW", "ko", "de", "fr", "es", "it", "pt_BR", "nl", "pl",
                             "ru", "tr", "ar", "he"}) {
        EXPECT_TRUE(std::binary_search(folders.begin(), folders.end(), code)) << code;
    }
}

TEST_F(StringTablesTest, BundleTemplateHoldsEveryFileUnchanged) {
    size_t files = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(kUilangFolder)) {
        if (entry.is_regular_file()) {
            const auto relative = std::filesystem::relative(entry.path(), kUilangFolder).string();
            EXPECT_EQ(zpk_test::readFile(kBundleUilangFolder + "/" + relative),
                      zpk_test::readFile(entry.path().string()))
                << relative;
            ++files;
        }
    }
    EXPECT_EQ(files, s_tables.size() + 1);
}

TEST_F(StringTablesTest, ParserHasNothingToReport) {
    for (const Table& table : s_tables) {
        EXPECT_EQ(table.parseResult, 0) << table.code;
        EXPECT_EQ(table.messages, "") << table.code;
    }
}

TEST_F(StringTablesTest, EachTableHoldsTheKnownKeysOnceAndInOrder) {
    const std::vector<std::string> known(ZPKSTRING_KEYS.begin(), ZPKSTRING_KEYS.end());
    for (const Table& table : s_tables) {
        std::vector<std::string> keys;
        for (const auto& [key, text] : table.entries) {
            keys.push_back(key);
        }
        EXPECT_EQ(keys, known) << table.code;
    }
}

// A value that runs over a line end still parses, but loses the break without a message.
TEST_F(StringTablesTest, EachEntryStandsOnALineOfItsOwn) {
    for (const Table& table : s_tables) {
        std::istringstream lines(table.bytes);
        for (std::string line; std::getline(lines, line);) {
            const bool isEntry = line.starts_with('"') && line.ends_with("\";");
            EXPECT_TRUE(line.empty() || line.starts_with("//") || isEntry) << table.code << ": " << line;
        }
    }
}

TEST_F(StringTablesTest, OnlyTheFontNameMayBeEmpty) {
    for (const Table& table : s_tables) {
        for (const auto& [key, text] : table.entries) {
            EXPECT_TRUE(!text.empty() || key == ZPKSTRING_FONTNAME_FORMAC) << table.code << " " << key;
        }
    }
}

TEST_F(StringTablesTest, FilesAreUtf8WithoutMarkTabsOrControlCharacters) {
    for (const Table& table : s_tables) {
        const auto points = decode(table.bytes);
        ASSERT_TRUE(points) << table.code;
        EXPECT_EQ(points->find(U'\uFEFF'), std::u32string::npos) << table.code;
        EXPECT_TRUE(std::none_of(points->begin(), points->end(), isForbiddenControl)) << table.code;
        EXPECT_EQ(table.bytes.back(), '\n') << table.code;
    }
}

TEST_F(StringTablesTest, TextsHoldNoControlCharacterButLineFeeds) {
    for (const Table& table : s_tables) {
        for (const auto& [key, text] : table.entries) {
            const auto points = decode(text);
            ASSERT_TRUE(points) << table.code << " " << key;
            EXPECT_TRUE(std::none_of(points->begin(), points->end(), isForbiddenControl))
                << table.code << " " << key;
        }
    }
}

TEST_F(StringTablesTest, TextsNeitherBeginNorEndInBlanks) {
    for (const Table& table : s_tables) {
        for (const auto& [key, text] : table.entries) {
            const auto isBlank = [](char c) { return c == ' ' || c == '\n'; };
            EXPECT_FALSE(!text.empty() && (isBlank(text.front()) || isBlank(text.back())))
                << table.code << " " << key;
        }
    }
}

TEST_F(StringTablesTest, UpdateFailureGivesTheProductListLinesOfItsOwn) {
    for (const Table& table : s_tables) {
        const std::string text = table.text(ZPKSTRING_UPDATE_FAILURE);
        EXPECT_EQ(count(text, "\n%s\n"), 1U) << table.code;
        EXPECT_EQ(count(text, "%"), 1U) << table.code;
    }
}

TEST_F(StringTablesTest, NoOtherTextHoldsAPercentSign) {
    for (const Table& table : s_tables) {
        for (const auto& [key, text] : table.entries) {
            EXPECT_TRUE(key == ZPKSTRING_UPDATE_FAILURE || count(text, "%") == 0) << table.code << " " << key;
        }
    }
}

// A pair of dollar signs is a variable to the localizer; an ampersand marks a keyboard shortcut and
// an angle bracket may begin markup in a window.
TEST_F(StringTablesTest, TextsHoldNoCharacterThatIsReadAsMoreThanText) {
    for (const Table& table : s_tables) {
        for (const auto& [key, text] : table.entries) {
            EXPECT_EQ(text.find_first_of("$&<>"), std::string::npos) << table.code << " " << key;
        }
    }
}

TEST_F(StringTablesTest, DiscMessageNamesTheSearchButtonBetweenQuotationMarks) {
    const std::vector<std::pair<std::string, std::string>> quotationMarks = {
        {"“", "”"}, {"‘", "’"}, {"„", "“"},   {"„", "”"},
        {"”", "”"}, {"«", "»"}, {"「", "」"}, {"«\u00A0", "\u00A0»"}};
    for (const Table& table : s_tables) {
        const std::string message = table.text(ZPKSTRING_DISCCHECK_MESSAGE);
        const std::string button = table.text(ZPKSTRING_DISCCHECK_START);
        EXPECT_TRUE(std::any_of(
            quotationMarks.begin(), quotationMarks.end(),
            [&](const auto& marks) { return count(message, marks.first + button + marks.second) == 1; }))
            << table.code << ": " << message;
    }
}

TEST_F(StringTablesTest, ButtonsOfTheDiscWindowDiffer) {
    for (const Table& table : s_tables) {
        EXPECT_NE(table.text(ZPKSTRING_DISCCHECK_START), table.text(ZPKSTRING_DISCCHECK_CANCEL))
            << table.code;
    }
}

TEST_F(StringTablesTest, MenuItemsOfTheApplicationNameIt) {
    for (const Table& table : s_tables) {
        for (const char* key : {ZPKSTRING_ABOUTZEPHYRKIT, ZPKSTRING_HIDEZEPHYRKIT, ZPKSTRING_QUITZEPHYRKIT}) {
            EXPECT_EQ(count(table.text(key), "Zephyrkit"), 1U) << table.code << " " << key;
        }
    }
}

struct SameAsEnglish {
    const char* key;
    std::set<std::string> codes;
    const char* reason;
};

std::vector<SameAsEnglish> textsThatMayEqualTheEnglishOnes() {
    std::vector<std::string> folders = languageFolders();
    std::set<std::string> all(folders.begin(), folders.end());
    all.erase("en");
    return {
        {ZPKSTRING_OK, {"ja", "de", "fr", "it", "pt_BR", "nl", "pl"}, "the button is called OK there too"},
        {ZPKSTRING_ERROR, {"es"}, "the Spanish word is the same"},
        {ZPKSTRING_SERVICES, {"fr"}, "the French word is the same"},
        {ZPKSTRING_FONTNAME_FORMAC, all, "empty: the desktop's own font is kept"},
        {ZPKSTRING_FONTNAME_FORWIN,
         {"de", "fr", "es", "it", "pt_BR", "nl", "pl", "ru", "tr", "ar", "he"},
         "one font covers these scripts"},
        {ZPKSTRING_FONTSIZE_FORWIN, all, "one size suits all"},
    };
}

TEST_F(StringTablesTest, NoTextIsLeftInEnglish) {
    std::set<std::pair<std::string, std::string>> allowed;
    for (const SameAsEnglish& row : textsThatMayEqualTheEnglishOnes()) {
        for (const std::string& code : row.codes) {
            allowed.emplace(code, row.key);
        }
    }
    std::set<std::pair<std::string, std::string>> equal;
    for (const Table& table : s_tables) {
        for (const auto& [key, text] : table.entries) {
            if (table.code != "en" && text == tableOf("en").text(key)) {
                equal.emplace(table.code, key);
            }
        }
    }
    EXPECT_EQ(equal, allowed);
}

// The first letter of a paragraph decides its direction.
TEST_F(StringTablesTest, RightToLeftParagraphsBeginInTheirOwnScript) {
    const std::set<std::string> notShown = {ZPKSTRING_FONTNAME_FORWIN, ZPKSTRING_FONTSIZE_FORWIN};
    for (const char* code : {"ar", "he"}) {
        for (const auto& [key, text] : tableOf(code).entries) {
            std::istringstream paragraphs(text);
            for (std::string paragraph; notShown.count(key) == 0 && std::getline(paragraphs, paragraph);) {
                const auto points = decode(paragraph);
                ASSERT_TRUE(points) << code << " " << key;
                EXPECT_TRUE(points->empty() || paragraph == "%s" || isRightToLeftLetter(points->front()))
                    << code << " " << key << ": " << paragraph;
            }
        }
    }
}

TEST_F(StringTablesTest, ChineseTablesKeepToTheirOwnForms) {
    const std::vector<std::pair<std::string, std::string>> traditionalAndSimplified = {
        {"裝", "装"}, {"關", "关"}, {"隱", "隐"}, {"顯", "显"}, {"務", "务"}, {"錯", "错"},
        {"壓", "压"}, {"請", "请"}, {"無", "无"}, {"間", "间"}, {"夾", "夹"}, {"動", "动"},
        {"啟", "启"}, {"權", "权"}, {"產", "产"}, {"統", "统"}, {"識", "识"}, {"後", "后"},
        {"確", "确"}, {"腦", "脑"}, {"們", "们"}, {"這", "这"}, {"個", "个"}, {"來", "来"},
        {"檔", "档"}, {"應", "应"}, {"從", "从"}, {"對", "对"}, {"並", "并"}};
    const std::string& traditional = tableOf("zh_TW").bytes;
    const std::string& simplified = tableOf("zh_CN").bytes;
    size_t pairsInUse = 0;
    for (const auto& [traditionalForm, simplifiedForm] : traditionalAndSimplified) {
        EXPECT_EQ(count(traditional, simplifiedForm), 0U) << simplifiedForm;
        EXPECT_EQ(count(simplified, traditionalForm), 0U) << traditionalForm;
        pairsInUse += count(traditional, traditionalForm) > 0 && count(simplified, simplifiedForm) > 0;
    }
    EXPECT_GE(pairsInUse, 10U);
}

}  // namespace
