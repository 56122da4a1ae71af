// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Common/CStringUtil.h"

#include <gtest/gtest.h>

using varno_zpk::CStringUtil;

TEST(StringUtilTest, AssignsTheBytesInPlaceOfTheOldText) {
    const char* const texts[] = {"", "a", "\xE6\x97\xA5\xE6\x9C\xAC", "\xFF\xC0 not UTF-8", "$Name$\r\n\t"};
    for (const char* text : texts) {
        std::string out("earlier and rather longer text");
        CStringUtil::SetUTF8StringToUstring(text, out);
        EXPECT_EQ(out, std::string(text));
    }
}

TEST(StringUtilTest, TextMayLieInTheOutput) {
    std::string out("0123456789");
    CStringUtil::SetUTF8StringToUstring(out.c_str() + 4, out);
    EXPECT_EQ(out, "456789");
}
