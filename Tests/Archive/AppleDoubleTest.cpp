// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/AppleDouble.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Tests/Archive/OverlappingTables.h"

namespace {

using namespace zpk_archive;

TEST(AppleDoubleTest, EveryKindOfAttributeComesBack) {
    for (const AttributeMap& attributes : std::vector<AttributeMap>{
             {},
             {{kFinderInfoName, std::string(32, 'f')}},
             {{kFinderInfoName, std::string(32, '\0')}},
             {{kFinderInfoName, "short"}},
             {{kResourceForkName, "fork"}},
             {{kResourceForkName, ""}},
             {{"a", ""}},
             {{"a", "1"}, {"bb", "22"}, {"ccc", "333"}, {std::string(250, 'n'), std::string(65536, 'v')}},
             {{kFinderInfoName, std::string(32, 'f')},
              {kResourceForkName, std::string(1000, 'r')},
              {"x", "y"}}}) {
        std::optional<AttributeMap> decoded = decodeAppleDouble(encodeAppleDouble(attributes));
        ASSERT_TRUE(decoded.has_value());
        EXPECT_EQ(*decoded, attributes);
    }
}

TEST(AppleDoubleTest, LayoutIsThatOfTheFormat) {
    std::string bytes = encodeAppleDouble({{"ab", "value"}, {kResourceForkName, "fork"}});
    auto number = [&](std::size_t at) {
        std::uint32_t value = 0;
        for (std::size_t i = at; i < at + 4; ++i) {
            value = value << 8 | static_cast<unsigned char>(bytes[i]);
        }
        return value;
    };
    EXPECT_EQ(number(0), 0x00051607U);
    EXPECT_EQ(number(4), 0x00020000U);
    EXPECT_EQ(number(24) >> 16, 2U);
    EXPECT_EQ(number(26), 9U);
    EXPECT_EQ(number(30), 50U);
    EXPECT_EQ(number(38), 2U);
    EXPECT_EQ(bytes.substr(84, 4), "ATTR");
    EXPECT_EQ(number(92), number(30) + number(34));  // The table's end is the Finder info entry's.
    EXPECT_EQ(number(96), number(120));              // The first value lies where the data start.
    EXPECT_EQ(bytes.substr(131, 3), std::string("ab\0", 3));
    EXPECT_EQ(bytes.substr(number(120), number(124)), "value");
    EXPECT_EQ(bytes.substr(number(42), number(46)), "fork");
}

TEST(AppleDoubleTest, TruncationAndFlippedBytesNeverReadOutside) {
    const std::string good =
        encodeAppleDouble({{"name", "value"}, {"other", "x"}, {kResourceForkName, "fork"}});
    for (std::size_t size = 0; size < good.size(); ++size) {
        EXPECT_FALSE(decodeAppleDouble(good.substr(0, size)).has_value()) << size;
    }
    for (std::size_t at = 0; at < good.size(); ++at) {
        for (int value : {0x00, 0x01, 0x7f, 0x80, 0xff}) {
            std::string bad = good;
            bad[at] = static_cast<char>(value);
            decodeAppleDouble(bad);
        }
    }
}

TEST(AppleDoubleTest, ValuesThatTogetherExceedTheFileAreRefused) {
    std::string bytes = encodeAppleDouble({{"a", "1"}, {"b", std::string(100, 'v')}});
    // The first entry's value is made to cover the second's place as well: offset 50 + 36 + ..., length 200.
    std::string bad = bytes;
    bad[120 + 6] = 0;
    bad[120 + 7] = static_cast<char>(bytes.size() & 0xff);
    bad[120 + 2] = 0;
    bad[120 + 3] = 0;
    EXPECT_FALSE(decodeAppleDouble(bad).has_value());
}

TEST(AppleDoubleTest, ValuesOfSeveralTablesThatTogetherExceedTheFileAreRefused) {
    EXPECT_TRUE(decodeAppleDouble(zpk_test::makeOverlappingTables(1, 1000)).has_value());
    EXPECT_FALSE(decodeAppleDouble(zpk_test::makeOverlappingTables(2, 1000)).has_value());
    EXPECT_FALSE(decodeAppleDouble(zpk_test::makeOverlappingTables(64, 1000)).has_value());
}

}  // namespace
