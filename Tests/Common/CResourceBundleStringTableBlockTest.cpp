// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

// The parser reads a file in blocks of 10240 bytes. Where a block ends must not show: the same table,
// shifted so that each of its bytes in turn comes first in a block, gives the same entries and faults.
// In particular the byte that opens a block can be put back, since it is put back to the start of the
// block just read; only the end of the file, and nothing before it, is beyond putting back.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "Common/CResourceBundleStringTableParser.h"
#include "Tests/Common/ParsedTable.h"
#include "Tests/Support/TemporaryFolder.h"

namespace {

using varno_zpk::CResourceBundleStringTableParser;
using zpk_test::Entries;
using zpk_test::faultLine;
using zpk_test::parseContents;
using zpk_test::ParsedTable;
using zpk_test::TemporaryFolder;

constexpr std::size_t kBlockSize = 10240;
constexpr std::size_t kShortestPadding = 3;

/// One comment line of `size` bytes, which shifts what follows and leaves its columns alone.
std::string padding(std::size_t size) {
    return "//" + std::string(size - kShortestPadding, '.') + "\n";
}

/// Puts each byte of the table, and the end of the file, first behind the end of the first and of the
/// second block.
void expectSameAtEveryShift(const std::string& path, const std::string& table, const ParsedTable& expected) {
    for (std::size_t blocks = 1; blocks <= 2; ++blocks) {
        for (std::size_t opening = 0; opening <= table.size(); ++opening) {
            const std::string contents = padding(blocks * kBlockSize - opening) + table;
            ASSERT_EQ(parseContents(path, contents), expected)
                << "byte " << opening << " opens block " << blocks;
        }
    }
}

struct Row {
    const char* name;
    std::string table;
    Entries entries;
    std::size_t faults;
};

const Row kRows[] = {
    {"Delimiters", "a=1;b=2;", {{"a", "1"}, {"b", "2"}}, 0},
    {"CarriageReturnAndLineFeed", "a\r\n=\r\n1\r\n;\r\nx;", {{"a", "1"}}, 1},
    {"CarriageReturnsAlone", "a\r=\r\r1;\rx;", {{"a", "1"}}, 1},
    {"LineFeeds", "a\n=\n\n1;\nx;", {{"a", "1"}}, 1},
    {"LineEndsInQuotes", "a=\"1\r\n2\r3\n4\";x;", {{"a", "1234"}}, 1},
    {"Escapes", R"(a\"\\\n\t="\"\\\n\t";)", {{"a\"\\\n\t", "\"\\\n\t"}}, 0},
    {"UnknownEscapes", R"(a\q="1\q";b=\/2\;)", {{"aq", "1q"}, {"b", "2"}}, 5},
    {"UnknownEscapeOfALineEnd", "a=1\\\r\n2;b=\"\\\r\n\";x;", {{"a", "12"}, {"b", ""}}, 3},
    {"BackslashAtTheEnd", "a=1;b=\\", {{"a", "1"}}, 2},
    {"BlockComments", "/*x*/a/**/=/***/1/*/*/;/* *\r\n/ */b=2;", {{"a", "1"}, {"b", "2"}}, 0},
    {"LineComments", "//x\r\na//y\r=//z\n1;//", {{"a", "1"}}, 0},
    {"UnclosedComment", "a=1;/* *", {{"a", "1"}}, 0},
    {"LoneSlashes", "/a=1/2/;b=/\"/\"/\r\n;x;/", {{"a", "12"}, {"b", "/"}}, 7},
    {"Quotes", "\"a\" \"b\"=\"1\"2\"3\";\"\"=\"\";c=\"\";", {{"ab", "123"}, {"c", ""}}, 0},
    {"UnclosedQuote", "a=1;b=\"2;", {{"a", "1"}}, 1},
    {"TabsInQuotes", "a=\"\t1\t\t2\t\";", {{"a", "12"}}, 0},
    {"MultiByteText", "終了=\"終了 €😀\";é=ё;", {{"終了", "終了 €😀"}, {"é", "ё"}}, 0},
    {"ByteOrderMarkInText",
     "a\xEF\xBB\xBF=\xEF\xBB\xBF;\xEF\xBB\xBF=1;",
     {{"a\xEF\xBB\xBF", "\xEF\xBB\xBF"}, {"\xEF\xBB\xBF", "1"}},
     0},
    {"FaultyEntries", "a;b=c=d;;=e;\"\"=f;g=1;h=2", {{"g", "1"}}, 5},
};

void PrintTo(const Row& row, std::ostream* stream) {
    *stream << row.name;
}

class StringTableBlockTest : public testing::TestWithParam<Row> {};

TEST_P(StringTableBlockTest, EndOfABlockDoesNotShow) {
    const TemporaryFolder folder;
    const std::string path = folder / "table";
    const Row& row = GetParam();

    const ParsedTable expected = parseContents(path, padding(kShortestPadding) + row.table);
    EXPECT_EQ(expected.entries, row.entries);
    const auto faults = std::count(expected.standardOutput.begin(), expected.standardOutput.end(), '\n');
    EXPECT_EQ(static_cast<std::size_t>(faults), row.faults) << expected;
    expectSameAtEveryShift(path, row.table, expected);
}

INSTANTIATE_TEST_SUITE_P(Rows, StringTableBlockTest, testing::ValuesIn(kRows),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(StringTableBlockTest, WholeTableAtEveryShift) {
    const TemporaryFolder folder;
    const std::string path = folder / "table";
    std::string table;
    for (const Row& row : kRows) {
        table += row.table + "\n";
    }
    expectSameAtEveryShift(path, table, parseContents(path, padding(kShortestPadding) + table));
}

TEST(StringTableBlockTest, ByteThatOpensABlockCanBePutBack) {
    const TemporaryFolder folder;
    const std::string path = folder / "table";
    const std::string beforeSlash = "k=" + std::string(kBlockSize - 3, 'x');
    const ParsedTable afterSlash = parseContents(path, beforeSlash + "/y;");
    EXPECT_EQ(afterSlash.entries, (Entries{{"k", beforeSlash.substr(2) + "y"}}));
    EXPECT_EQ(afterSlash.standardOutput, faultLine(path, 1, kBlockSize + 1, "Syntax error."));

    const std::string beforeReturn = "k=" + std::string(kBlockSize - 3, 'x');
    const ParsedTable afterReturn = parseContents(path, beforeReturn + "\ry;z;");
    EXPECT_EQ(afterReturn.entries, (Entries{{"k", beforeReturn.substr(2) + "y"}}));
    EXPECT_EQ(afterReturn.standardOutput, faultLine(path, 2, 4, "Syntax error."));
}

TEST(StringTableBlockTest, FileOfWholeBlocksEndsLikeAnyOther) {
    const TemporaryFolder folder;
    const std::string path = folder / "table";
    for (const std::size_t size : {kBlockSize - 1, kBlockSize, kBlockSize + 1, 2 * kBlockSize}) {
        const std::string cutOff = "k=" + std::string(size - 2, 'x');
        const ParsedTable table = parseContents(path, cutOff);
        EXPECT_EQ(table.entries, Entries());
        EXPECT_EQ(table.standardOutput, faultLine(path, 1, static_cast<int>(size), "Syntax error."));
    }
}

TEST(StringTableBlockTest, FileIsReadInBlocksOfThisSize) {
    // How far a table that is too large was read tells where its blocks end.
    constexpr std::size_t kLargest = CResourceBundleStringTableParser::kLargestTable;
    const TemporaryFolder folder;
    zpk_test::writeFile(folder / "table", padding(kLargest + 10 * kBlockSize));
    std::FILE* file = std::fopen((folder / "table").c_str(), "r");
    ASSERT_NE(file, nullptr);
    std::vector<varno_zpk::CBaseObject*> elements;
    EXPECT_THROW(CResourceBundleStringTableParser().ParseInternal(file, "table", elements),
                 std::length_error);
    EXPECT_EQ(static_cast<std::size_t>(std::ftell(file)), (kLargest / kBlockSize + 1) * kBlockSize);
    std::fclose(file);
}

TEST(StringTableBlockTest, ColumnsCountOverBlocks) {
    const TemporaryFolder folder;
    const std::string path = folder / "table";
    const std::string mark = "\xEF\xBB\xBF";
    EXPECT_EQ(parseContents(path, mark + std::string(3 * kBlockSize, ' ') + "key;").standardOutput,
              faultLine(path, 1, 3 + 3 * kBlockSize + 4, "Syntax error."));
    EXPECT_EQ(parseContents(path, mark + "\n" + std::string(3 * kBlockSize, ' ') + "key;").standardOutput,
              faultLine(path, 2, 3 * kBlockSize + 4, "Syntax error."));
}

std::string randomTable(std::mt19937& random, const std::string& alphabet, std::size_t size) {
    std::uniform_int_distribution<std::size_t> index(0, alphabet.size() - 1);
    std::string table(size, '\0');
    std::generate(table.begin(), table.end(), [&] { return alphabet[index(random)]; });
    return table;
}

TEST(StringTableBlockTest, RandomTablesOfDelicateBytes) {
    const TemporaryFolder folder;
    const std::string path = folder / "table";
    std::mt19937 random(20240501);
    const std::string alphabet = "ab =;\"/*\\nq\t\r\n==;;";
    for (int round = 0; round < 60; ++round) {
        const std::string table = randomTable(random, alphabet, 40);
        const ParsedTable expected = parseContents(path, padding(kShortestPadding) + table);
        for (std::size_t opening = 0; opening <= table.size(); ++opening) {
            ASSERT_EQ(parseContents(path, padding(kBlockSize - opening) + table), expected)
                << testing::PrintToString(table) << " shifted by " << opening;
        }
    }
}

TEST(StringTableBlockTest, RandomBytes) {
    const TemporaryFolder folder;
    const std::string path = folder / "table";
    std::mt19937 random(20240502);
    std::string everyByte;
    for (int byte = 0; byte < 256; ++byte) {
        everyByte.push_back(static_cast<char>(byte));
    }
    for (int round = 0; round < 100; ++round) {
        const std::size_t size = std::uniform_int_distribution<std::size_t>(0, 3 * kBlockSize)(random);
        const std::string bytes = randomTable(random, everyByte, size);
        const ParsedTable expected = parseContents(path, padding(kShortestPadding) + bytes);
        EXPECT_EQ(expected.result, 0);
        const std::size_t shift = std::uniform_int_distribution<std::size_t>(4, kBlockSize)(random);
        ASSERT_EQ(parseContents(path, padding(shift) + bytes), expected) << "round " << round;
    }
}

}  // namespace
