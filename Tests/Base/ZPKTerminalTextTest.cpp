// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Base/ZPKTerminalText.h"

#include <gtest/gtest.h>

#include "Base/ZPKUnicode.h"

namespace {

std::string utf8(char32_t character) {
    std::string text;
    ZPKUnicode::append(text, character);
    return text;
}

TEST(ZPKTerminalTextTest, OnlyWhatIsDrawnIsHarmless) {
    for (char32_t character = 0; character < 0x110000; ++character) {
        const bool isControl = character < 0x20 || (character >= 0x7F && character < 0xA0);
        const bool isSeparator = character == 0x2028 || character == 0x2029;
        const bool isMark = character == 0x061C || character == 0x200E || character == 0x200F;
        const bool isTurn =
            (character >= 0x202A && character <= 0x202E) || (character >= 0x2066 && character <= 0x206F);
        ASSERT_EQ(ZPKTerminalText::isHarmless(character), !isControl && !isSeparator && !isMark && !isTurn)
            << static_cast<unsigned long>(character);
    }
}

TEST(ZPKTerminalTextTest, PrintableTextIsOneLineThatCanBeReadBack) {
    struct Row {
        std::string text;
        const char* line;
    };
    const Row rows[] = {
        {"", ""},
        {"plain text / 100%", "plain text / 100%"},
        {"\xE6\x97\xA5\xE6\x9C\xAC \xF0\x9F\x98\x80", "\xE6\x97\xA5\xE6\x9C\xAC \xF0\x9F\x98\x80"},
        {"\xD7\xA9\xD7\x9C\xD7\x95\xD7\x9D", "\xD7\xA9\xD7\x9C\xD7\x95\xD7\x9D"},
        {"a\nb\tc\\d", "a\\nb\\tc\\\\d"},
        {"\x1B[31mred", "\\x1b[31mred"},
        {"\r\x07\x7F", "\\x0d\\x07\\x7f"},
        {std::string("a\0b", 3), "a\\x00b"},
        {utf8(0x9B) + "31m", "\\xc2\\x9b31m"},
        {"a" + utf8(0x202E) + "b", "a\\xe2\\x80\\xaeb"},
        {utf8(0x2066) + utf8(0x200F) + utf8(0x061C), "\\xe2\\x81\\xa6\\xe2\\x80\\x8f\\xd8\\x9c"},
        {utf8(0x2028), "\\xe2\\x80\\xa8"},
        {"\xFF\xC0\xAFz", "\\xff\\xc0\\xafz"},
        {"\xE2\x80", "\\xe2\\x80"},
        {"\xED\xA0\x80", "\\xed\\xa0\\x80"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(ZPKTerminalText::printable(row.text), row.line);
    }
}

TEST(ZPKTerminalTextTest, LongTextIsCutBetweenCharacters) {
    EXPECT_EQ(ZPKTerminalText::printable("12345", 5), "12345");
    EXPECT_EQ(ZPKTerminalText::printable("123456", 5), "12345...");
    EXPECT_EQ(ZPKTerminalText::printable("1234\xC3\xA9", 5), "1234...") << "no half of a character";
    EXPECT_EQ(ZPKTerminalText::printable("1234\n", 5), "1234...") << "no half of an escape";
    EXPECT_EQ(ZPKTerminalText::printable("x", 0), "...");
    EXPECT_EQ(ZPKTerminalText::printable("", 0), "");
}

TEST(ZPKTerminalTextTest, TextForPeopleKeepsItsLines) {
    EXPECT_EQ(ZPKTerminalText::harmless("one\ntwo\n"), "one\ntwo\n");
    EXPECT_EQ(ZPKTerminalText::harmless("C:\\path\t\r\x1B[2Jx"), "C:\\path[2Jx");
    EXPECT_EQ(ZPKTerminalText::harmless("a" + utf8(0x202E) + "b" + utf8(0x2069) + utf8(0x9B) + "c"), "abc");
    EXPECT_EQ(ZPKTerminalText::harmless("\xFFz\xE2\x80"), "z");
    EXPECT_EQ(ZPKTerminalText::harmless("\xE6\x97\xA5 \xD7\xA9"), "\xE6\x97\xA5 \xD7\xA9");
    EXPECT_EQ(ZPKTerminalText::harmless(""), "");
}

}  // namespace
