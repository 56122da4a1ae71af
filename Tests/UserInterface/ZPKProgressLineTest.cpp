// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/Terminal/ZPKProgressLine.h"

#include <gtest/gtest.h>

#include "UserInterface/Terminal/ZPKTextColumns.h"

namespace {

using std::chrono::seconds;

TEST(ZPKProgressLine, BarPercentageTimeTitle) {
    EXPECT_EQ((ZPKProgressLine{40, seconds(7), "Unpacking", "en"}.whole(79)),
              "[#######............]   40%  0:07  Unpacking");
    EXPECT_EQ((ZPKProgressLine{100, seconds(61), "Unpacking", "tr"}.whole(40)),
              "[##########]  %100  1:01  Unpacking");
    EXPECT_EQ((ZPKProgressLine{0, seconds(3725), "T", "en"}.whole(40)), "[..........]    0%  1:02:05  T");
}

TEST(ZPKProgressLine, BarGrowsWithTheTerminalUpToAMeasure) {
    const ZPKProgressLine line{50, seconds(0), "", "en"};
    EXPECT_EQ(line.withoutTitle(80), "[##########..........]   50%  0:00");
    EXPECT_EQ(line.withoutTitle(200), "[###############...............]   50%  0:00");
    EXPECT_EQ(line.withoutTitle(1000), line.withoutTitle(200));
}

TEST(ZPKProgressLine, WithoutAnEndMarksMoveAsTimePasses) {
    EXPECT_EQ((ZPKProgressLine{std::nullopt, seconds(0), "T", "en"}.whole(24)), "[###...]  0:00  T");
    EXPECT_EQ((ZPKProgressLine{std::nullopt, seconds(3), "T", "en"}.whole(24)), "[...###]  0:03  T");
    EXPECT_EQ((ZPKProgressLine{std::nullopt, seconds(4), "T", "en"}.whole(24)), "[###...]  0:04  T");
}

TEST(ZPKProgressLine, NumbersAreTheLanguages) {
    EXPECT_EQ((ZPKProgressLine{40, seconds(10), "T", "ar"}.whole(40)), "[####......]   ٤٠٪  ٠:١٠  T");
}

TEST(ZPKProgressLine, NarrowOneLeavesOutTheTitleThenTheBarThenTheTime) {
    const ZPKProgressLine line{40, seconds(7), "日本", "en"};
    EXPECT_EQ(line.whole(26), "[##....]   40%  0:07  日本");
    EXPECT_EQ(line.whole(25), std::nullopt);
    EXPECT_EQ(line.withoutTitle(19), "[##...]   40%  0:07");
    EXPECT_EQ(line.withoutTitle(18), " 40%  0:07");
    EXPECT_EQ(line.withoutTitle(9), " 40%");
    EXPECT_EQ(line.withoutTitle(3), "");
    for (std::size_t columns = 0; columns < 300; ++columns) {
        EXPECT_LE(ZPKTextColumns::of(line.withoutTitle(columns)), columns);
    }
}

}  // namespace
