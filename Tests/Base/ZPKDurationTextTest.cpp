// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Base/ZPKDurationText.h"

#include <gtest/gtest.h>

namespace zpk_test {

TEST(ZPKDurationText, CountsMinutesAndFromAnHourOnHours) {
    EXPECT_EQ(ZPKDurationText(std::chrono::seconds(0)), "0:00");
    EXPECT_EQ(ZPKDurationText(std::chrono::seconds(59)), "0:59");
    EXPECT_EQ(ZPKDurationText(std::chrono::seconds(61)), "1:01");
    EXPECT_EQ(ZPKDurationText(std::chrono::seconds(3599)), "59:59");
    EXPECT_EQ(ZPKDurationText(std::chrono::seconds(3600)), "1:00:00");
    EXPECT_EQ(ZPKDurationText(std::chrono::seconds(360001)), "100:00:01");
}

}  // namespace zpk_test
