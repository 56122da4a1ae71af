// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/Check/NameHashes.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <set>
#include <string>
#include <vector>

namespace zpk_packager {

namespace {

std::uint64_t hashOfNumber(int number) {
    return NameHashes::hashOf("name " + std::to_string(number));
}

TEST(NameHashesTest, EveryNameIsInOnePart) {
    NameHashes hashes(50);
    std::set<int> lacking;
    std::set<std::uint64_t> doubled;
    int parts = 0;
    do {
        for (int number = 0; number < 1000; ++number) {
            hashes.add(hashOfNumber(number));
        }
        hashes.add(hashOfNumber(33));
        hashes.add(hashOfNumber(33));
        hashes.add(hashOfNumber(777));
        hashes.sort();
        for (int number = 0; number < 1005; ++number) {
            if (hashes.lacks(hashOfNumber(number))) {
                EXPECT_TRUE(lacking.insert(number).second) << number;
            }
        }
        for (const std::uint64_t hash : hashes.doubled(10)) {
            EXPECT_TRUE(doubled.insert(hash).second);
        }
        ++parts;
    } while (hashes.nextPart());
    EXPECT_EQ(lacking, (std::set<int>{1000, 1001, 1002, 1003, 1004}));
    EXPECT_EQ(doubled, (std::set<std::uint64_t>{hashOfNumber(33), hashOfNumber(777)}));
    EXPECT_GE(parts, 20);
    EXPECT_LE(parts, 64);
}

TEST(NameHashesTest, OfManyDoubledOnesNoMoreAreGivenThanAreAskedFor) {
    NameHashes hashes;
    for (std::uint64_t number = 0; number < 100; ++number) {
        hashes.add(number);
        hashes.add(number);
    }
    hashes.sort();
    EXPECT_EQ(hashes.doubled(3), (std::vector<std::uint64_t>{0, 1, 2}));
    EXPECT_FALSE(hashes.nextPart());
}

}  // namespace

}  // namespace zpk_packager
