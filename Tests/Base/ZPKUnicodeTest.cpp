// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Base/ZPKUnicode.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>

namespace {

std::string utf8(char32_t character) {
    std::string text;
    ZPKUnicode::append(text, character);
    return text;
}

bool isSurrogate(char32_t character) {
    return character >= 0xD800 && character < 0xE000;
}

TEST(ZPKUnicodeTest, EveryCharacterComesBack) {
    for (char32_t character = 0; character < 0x110000; ++character) {
        if (isSurrogate(character)) {
            continue;
        }
        const std::string text = utf8(character) + "x";
        char32_t decoded = 0xFFFFFFFF;
        const std::size_t length = ZPKUnicode::decode(text, decoded);
        ASSERT_EQ(length, text.size() - 1) << static_cast<unsigned long>(character);
        ASSERT_EQ(decoded, character);
    }
}

TEST(ZPKUnicodeTest, CharactersHaveTheirBytes) {
    EXPECT_EQ(utf8('A'), "A");
    EXPECT_EQ(utf8(0xE9), "\xC3\xA9");
    EXPECT_EQ(utf8(0x65E5), "\xE6\x97\xA5");
    EXPECT_EQ(utf8(0x1F600), "\xF0\x9F\x98\x80");
    EXPECT_EQ(utf8(0x10FFFF), "\xF4\x8F\xBF\xBF");
}

TEST(ZPKUnicodeTest, WhatIsNoCharacterIsReplaced) {
    for (const std::uint32_t none : {0xD800u, 0xDBFFu, 0xDC00u, 0xDFFFu, 0x110000u, 0xFFFFFFFFu}) {
        EXPECT_EQ(utf8(none), "\xEF\xBF\xBD") << none;
    }
}

TEST(ZPKUnicodeTest, WrongSequencesAreNone) {
    const std::string rows[] = {
        "",
        "\x80",
        "\xBF",
        "\xC0\x80",
        "\xC1\xBF",
        "\xC3",
        "\xC3(",
        "\xC3\xC3",
        "\xE0\x80\x80",
        "\xE0\x9F\xBF",
        "\xE6\x97",
        "\xE6\x97(",
        "\xE6(\xA5",
        "\xED\xA0\x80",
        "\xED\xBF\xBF",
        "\xF0\x8F\xBF\xBF",
        "\xF0\x9F\x98",
        "\xF0\x9F\x98(",
        "\xF0\x9F(\x80",
        "\xF4\x90\x80\x80",
        "\xF5\x80\x80\x80",
        "\xF8\x88\x80\x80\x80",
        "\xFE",
        "\xFF",
    };
    for (const std::string& row : rows) {
        char32_t character = 'u';
        EXPECT_EQ(ZPKUnicode::decode(row, character), 0u) << ::testing::PrintToString(row);
        EXPECT_EQ(character, U'u') << "is left alone";
        EXPECT_EQ(ZPKUnicode::isUTF8(row), row.empty());
        EXPECT_FALSE(ZPKUnicode::isUTF8("ab" + row + "c") && !row.empty());
    }
}

TEST(ZPKUnicodeTest, DecodingEveryPairOfBytesAgreesWithTheRule) {
    for (unsigned int first = 0; first < 256; ++first) {
        for (unsigned int second = 0; second < 256; ++second) {
            const std::string text{static_cast<char>(first), static_cast<char>(second)};
            char32_t character = 0;
            const std::size_t length = ZPKUnicode::decode(text, character);
            const bool isPair = first >= 0xC2 && first < 0xE0 && second >= 0x80 && second < 0xC0;
            ASSERT_EQ(length, first < 0x80 ? 1u : isPair ? 2u : 0u) << first << " " << second;
        }
    }
}

TEST(ZPKUnicodeTest, WholeTextsAreChecked) {
    EXPECT_TRUE(ZPKUnicode::isUTF8(""));
    EXPECT_TRUE(ZPKUnicode::isUTF8(std::string("a\0b", 3)));
    EXPECT_TRUE(ZPKUnicode::isUTF8("na\xC3\xAFve \xE6\x97\xA5 \xF0\x9F\x98\x80"));
    EXPECT_FALSE(ZPKUnicode::isUTF8("caf\xE9"));
    EXPECT_FALSE(ZPKUnicode::isUTF8("\xE6\x97"));
}

TEST(ZPKUnicodeTest, MarksTellTheEncoding) {
    using Text = std::optional<std::string>;
    struct Row {
        std::string bytes;
        Text text;
    };
    const Row rows[] = {
        {"", ""},
        {"plain", "plain"},
        {"\xEF\xBB\xBF", ""},
        {"\xEF\xBB\xBF\xC3\xA9", "\xC3\xA9"},
        {"\xEF\xBB\xBF\xEF\xBB\xBFx", "\xEF\xBB\xBFx"},
        {"caf\xE9", std::nullopt},
        {"\xEF\xBB\xBF\xFF", std::nullopt},
        {std::string("\xFE\xFF\0A\x65\xE5", 6), "A\xE6\x97\xA5"},
        {std::string("\xFF\xFE"
                     "A\0\xE5\x65",
                     6),
         "A\xE6\x97\xA5"},
        {std::string("\xFE\xFF\xD8\x3D\xDE\x00x", 7), std::nullopt},
        {std::string("\xFE\xFF\xD8\x3D\xDE\x00", 6), "\xF0\x9F\x98\x80"},
        {std::string("\xFF\xFE\x3D\xD8\x00\xDE", 6), "\xF0\x9F\x98\x80"},
        {"\xFE\xFF\xD8\x3D", "\xEF\xBF\xBD"},
        {std::string("\xFE\xFF\xDE\x00\x00x", 6), "\xEF\xBF\xBDx"},
        {std::string("\xFE\xFF\xD8\x3D\x00x", 6), "\xEF\xBF\xBDx"},
        {"\xFE\xFF", ""},
        {"\xFF\xFE", ""},
        {"\xFE\xFFx", std::nullopt},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(ZPKUnicode::utf8FromMarkedText(row.bytes), row.text) << ::testing::PrintToString(row.bytes);
    }
}

}  // namespace
