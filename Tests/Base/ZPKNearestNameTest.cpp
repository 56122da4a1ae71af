// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Base/ZPKNearestName.h"

#include <gtest/gtest.h>

#include <string>

namespace {

const std::vector<std::string_view> kNames = {"Conditions", "TargetItems", "Disc", "UIMLog"};

TEST(ZPKNearestNameTest, FindsTheNameThatWasMeant) {
    struct Row {
        const char* word;
        const char* meant;
    };
    for (const Row& row :
         {Row{"conditions", "Conditions"}, Row{"UimLog", "UIMLog"}, Row{"Condition", "Conditions"},
          Row{"TragetItems", "TargetItems"}, Row{"Dics", "Disc"}, Row{"Disk", "Disc"}, Row{"Discs", "Disc"},
          Row{"Dis", "Disc"}, Row{"Disc", "Disc"}}) {
        EXPECT_EQ(ZPKNearestName::among(kNames, row.word), row.meant) << row.word;
    }
}

TEST(ZPKNearestNameTest, FindsNothingWhereNothingIsNear) {
    for (const char* word : {"", "Startup", "D", "Dks", "Bedingungen"}) {
        EXPECT_EQ(ZPKNearestName::among(kNames, word), "") << word;
    }
    EXPECT_EQ(ZPKNearestName::among({}, "Disc"), "");
}

TEST(ZPKNearestNameTest, OtherCapitalsAreNearerThanOtherLetters) {
    EXPECT_EQ(ZPKNearestName::among({"cods", "Code"}, "code"), "Code");
}

TEST(ZPKNearestNameTest, OfEquallyNearNamesTheFirstIsMeant) {
    EXPECT_EQ(ZPKNearestName::among({"pack", "back"}, "hack"), "pack");
}

TEST(ZPKNearestNameTest, DoesNotWorkItselfThroughALongWord) {
    const std::string known(65, 'a');
    EXPECT_EQ(ZPKNearestName::among({known, "a"}, std::string(65, 'a')), "");
    EXPECT_EQ(ZPKNearestName::among(kNames, std::string(std::size_t{1} << 24, 'a')), "");
}

}  // namespace
