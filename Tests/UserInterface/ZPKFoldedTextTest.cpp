// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/Terminal/ZPKFoldedText.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <sstream>

#include "UserInterface/Terminal/ZPKTextColumns.h"

namespace {

struct Row {
    const char* text;
    std::size_t columns;
    const char* folded;
};

void expectFolded(std::initializer_list<Row> rows) {
    for (const Row& row : rows) {
        EXPECT_EQ(ZPKFoldedText::of(row.text, row.columns), row.folded) << row.text;
    }
}

TEST(ZPKFoldedText, FoldsAtBlanks) {
    expectFolded({
        {"", 10, ""},
        {"\n\n", 10, "\n\n"},
        {"one two", 7, "one two"},
        {"one two", 6, "one\ntwo"},
        {"one  two", 7, "one\ntwo"},
        {"one\n\ntwo three", 5, "one\n\ntwo\nthree"},
        {"a\u00A0b c", 3, "a\u00A0b\nc"},
        {"e\u0301e\u0301 a", 4, "e\u0301e\u0301 a"},
        {"[1]: ", 5, "[1]: "},
        {"[1]: ", 4, "[1]:"},
    });
}

TEST(ZPKFoldedText, CutsWhatIsLongerThanALine) {
    expectFolded({
        {"abcdefgh", 3, "abc\ndef\ngh"},
        {"a bcdefgh i", 4, "a\nbcde\nfgh\ni"},
        {"a", 0, "a"},
        {"ab", 1, "a\nb"},
        {"e\u0301e\u0301e\u0301", 2, "e\u0301e\u0301\ne\u0301"},
        {"日本", 1, "日\n本"},
    });
}

TEST(ZPKFoldedText, FoldsIdeographsWherePunctuationAllows) {
    expectFolded({
        {"日本語", 4, "日本\n語"},
        {"日本語", 5, "日本\n語"},
        {"日本。語", 4, "日\n本。\n語"},
        {"日「本」", 4, "日\n「本\n」"},
        {"ab日本", 4, "ab日\n本"},
        {"한국어 말", 6, "한국어\n말"},
        {"か\u3099か\u3099", 2, "か\u3099\nか\u3099"},
        {"x か\u3099ab", 5, "x か\u3099\nab"},
    });
}

TEST(ZPKFoldedText, WhatContinuesAnIndentedLineIsIndentedMore) {
    expectFolded({
        {"  Suite for people", 12, "  Suite for\n    people"},
        {"  Suite\n  Tools", 9, "  Suite\n  Tools"},
        {"  abcdefgh", 6, "  abcd\n   efg\n   h"},
        {"        x", 4, "  x"},
        {"  ", 4, "  "},
    });
}

TEST(ZPKFoldedText, NoLineIsWiderAndNothingIsLost) {
    const std::string text =
        "Insert the disc of “Suite für 日本語 한국어 e\u0301” (or another), then choose “Search”.\n  Product "
        "名、です。\n";
    const auto inked = [](std::string of) {
        std::erase(of, ' ');
        std::erase(of, '\n');
        return of;
    };
    for (std::size_t columns = 2; columns < 120; ++columns) {
        const std::string folded = ZPKFoldedText::of(text, columns);
        EXPECT_EQ(inked(folded), inked(text));
        std::istringstream lines(folded);
        for (std::string line; std::getline(lines, line);) {
            EXPECT_LE(ZPKTextColumns::of(line), columns) << line;
        }
    }
}

}  // namespace
