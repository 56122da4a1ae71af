// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Base/ZPKTraceText.h"

#include <gtest/gtest.h>

#include "Base/ZPKUnicode.h"

namespace {

constexpr std::size_t kLongest = ZPKTraceText::kLongest;

TEST(ZPKTraceTextTest, TextWithinTheBoundIsShownWhole) {
    for (const std::string& text : {std::string(), std::string("a"), std::string(kLongest, 'a')}) {
        const ZPKTraceText traced(text);
        EXPECT_EQ(traced.shown().data(), text.data());
        EXPECT_EQ(traced.shown(), text);
        EXPECT_EQ(traced.mark(), "");
        EXPECT_EQ(traced.text(), text);
    }
}

TEST(ZPKTraceTextTest, LongerOneIsCutAndMarked) {
    for (const std::size_t size : {kLongest + 1, kLongest * 2, std::size_t{1} << 24}) {
        EXPECT_EQ(ZPKTraceText(std::string(size, 'a')).text(), std::string(kLongest, 'a') + "...");
    }
}

TEST(ZPKTraceTextTest, NoCharacterIsCut) {
    for (const std::string character : {"\u00E9", "\u65E5", "\U0001F600"}) {
        for (std::size_t before = 0; before <= character.size(); ++before) {
            const std::string beginning(kLongest - before, 'a');
            const std::string text = beginning + character + std::string(10, 'b');
            const std::string shown(ZPKTraceText(text).shown());
            EXPECT_TRUE(ZPKUnicode::isUTF8(shown));
            EXPECT_EQ(shown, before < character.size() ? beginning : beginning + character);
        }
    }
}

TEST(ZPKTraceTextTest, BytesThatAreNoTextAreCutAtTheBound) {
    EXPECT_EQ(ZPKTraceText(std::string(kLongest * 2, '\x80')).text(), std::string(kLongest, '\x80') + "...");
}

}  // namespace
