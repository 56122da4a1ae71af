// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/Check/SourceText.h"

#include <gtest/gtest.h>

#include <string>

namespace zpk_packager {

namespace {

std::string place(const SourceText& text, std::size_t offset) {
    const TextPlace place = text.placeOf(offset);
    return std::to_string(place.line) + ":" + std::to_string(place.column);
}

TEST(SourceTextTest, EachKindOfLineEndEndsOneLine) {
    const SourceText text("a\nb\rc\r\nd\n\re");
    EXPECT_EQ(place(text, 0), "1:1");
    EXPECT_EQ(place(text, 1), "1:2");
    EXPECT_EQ(place(text, 2), "2:1");
    EXPECT_EQ(place(text, 4), "3:1");
    EXPECT_EQ(place(text, 6), "3:3");
    EXPECT_EQ(place(text, 7), "4:1");
    EXPECT_EQ(place(text, 10), "6:1");
    EXPECT_EQ(place(text, 11), "6:2");
}

TEST(SourceTextTest, ColumnsCountCharacters) {
    const SourceText text("\xEF\xBB\xBF\xC3\xA9x\n\xE2\x82\xACy");
    EXPECT_EQ(place(text, 0), "1:1");
    EXPECT_EQ(place(text, 3), "1:1");
    EXPECT_EQ(place(text, 5), "1:2");
    EXPECT_EQ(place(text, 10), "2:2");
}

TEST(SourceTextTest, LongLinesAndEmptyTexts) {
    const SourceText text(std::string(5000, 'x'));
    for (const std::size_t offset : {1023U, 1024U, 1025U, 2048U, 4999U, 5000U}) {
        EXPECT_EQ(text.placeOf(offset).column, offset + 1);
    }
    EXPECT_EQ(place(SourceText(""), 0), "1:1");
    EXPECT_EQ(SourceText(std::string(1024, 'x')).placeOf(1024).column, 1025U);
}

}  // namespace

}  // namespace zpk_packager
