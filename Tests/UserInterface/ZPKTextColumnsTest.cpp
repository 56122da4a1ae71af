// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/Terminal/ZPKTextColumns.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cwchar>

namespace {

// What terminals do themselves: they ask the C library, or a table of the same origin.
TEST(ZPKTextColumns, EveryCharacterIsAsWideAsTheLibrarySays) {
    ASSERT_NE(std::setlocale(LC_CTYPE, "C.UTF-8"), nullptr);
    int known = 0;
    for (char32_t character = U' '; character <= 0x10FFFF; ++character) {
        const int columns = ::wcwidth(static_cast<wchar_t>(character));
        if (columns < 0) {
            continue;
        }
        ++known;
        ASSERT_EQ(ZPKTextColumns::ofCharacter(character), static_cast<std::size_t>(columns))
            << std::hex << static_cast<unsigned int>(character);
    }
    EXPECT_GT(known, 200'000);
}

TEST(ZPKTextColumns, OfTexts) {
    const struct {
        const char* text;
        std::size_t columns;
    } rows[] = {
        {"", 0},
        {"abc", 3},
        {"e\u0301t\u00E9", 3},
        {"日本語", 6},
        {"한국", 4},
        {"a\u200Bb\u200D", 2},
        {"ｱ", 1},
        {"\U0001F4BF", 2},
        {"أيٌّ", 2},
        {"a\xff\xe3\x81z", 2},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(ZPKTextColumns::of(row.text), row.columns) << row.text;
    }
}

}  // namespace
