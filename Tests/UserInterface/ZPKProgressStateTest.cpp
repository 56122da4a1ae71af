// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/ZPKProgressState.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

TEST(ZPKProgressState, NobodyCanTellBeforeTheFirstValue) {
    ZPKProgressState state([] {});
    EXPECT_EQ(state.percent(), std::nullopt);
    state.setDoubleValue(0);
    EXPECT_EQ(state.percent(), 0);
}

TEST(ZPKProgressState, CountsFromMinimumToMaximumAndStaysInside) {
    ZPKProgressState state([] {});
    state.setMinValue(50);
    state.setMaxValue(150);
    const struct {
        double value;
        int percent;
    } rows[] = {{75, 25}, {89.6, 40}, {1e300, 100}, {-1e300, 0}};
    for (const auto& row : rows) {
        state.setDoubleValue(row.value);
        EXPECT_EQ(state.percent(), row.percent) << row.value;
    }
}

TEST(ZPKProgressState, WithoutARangeOrANumberNobodyCanTell) {
    ZPKProgressState state([] {});
    state.setDoubleValue(std::numeric_limits<double>::quiet_NaN());
    EXPECT_EQ(state.percent(), std::nullopt);
    state.setDoubleValue(0);
    state.setMaxValue(0);
    EXPECT_EQ(state.percent(), std::nullopt);
}

TEST(ZPKProgressState, IndeterminateBarIsEndlessWhileAnimated) {
    ZPKProgressState state([] {});
    state.setDoubleValue(10);
    state.setIndeterminate(true);
    EXPECT_EQ(state.percent(), std::nullopt);
    EXPECT_FALSE(state.isEndless());
    state.startAnimation();
    EXPECT_TRUE(state.isEndless());
    state.stopAnimation();
    EXPECT_FALSE(state.isEndless());
    state.startAnimation();
    state.setIndeterminate(false);
    EXPECT_FALSE(state.isEndless());
    EXPECT_EQ(state.percent(), 10);
}

TEST(ZPKProgressState, TellsWhenThereMayBeSomethingElseToShow) {
    int shows = 0;
    ZPKProgressState state([&shows] { ++shows; });
    state.setMinValue(0);
    state.setMaxValue(10);
    state.setUsesThreadedAnimation(true);
    EXPECT_EQ(shows, 0);
    state.setDoubleValue(1);
    state.setIndeterminate(true);
    state.startAnimation();
    state.stopAnimation();
    state.setNeedsDisplay();
    EXPECT_EQ(shows, 5);
}

}  // namespace
