// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Base/ZPKNameBatch.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace {

std::string name(int number) {
    return "a name of some length " + std::to_string(100000 + number);
}

/// All the names of a folder, as a reader gets them; how often the folder was read is counted.
std::vector<std::string> allOf(const std::vector<std::string>& folder, std::size_t limit, int& reads,
                               bool forgetful = false) {
    ZPKNameBatch batch(limit);
    std::vector<std::string> taken;
    do {
        batch.begin();
        for (const std::string& each : folder) {
            batch.offer(each);
        }
        batch.end();
        ++reads;
        EXPECT_LE(batch.memory(), std::max<std::size_t>(limit, 100));
        for (int count = 0; !batch.isEmpty(); ++count) {
            taken.push_back(batch.take());
            if (forgetful && count == 2) {
                batch.forget();
            }
        }
    } while (batch.isPart());
    return taken;
}

std::vector<std::string> shuffled(int count) {
    std::vector<std::string> folder;
    for (int number = 0; number < count; ++number) {
        folder.push_back(name(number * 7919 % count));
    }
    return folder;
}

std::vector<std::string> sorted(std::vector<std::string> names) {
    std::sort(names.begin(), names.end());
    return names;
}

TEST(ZPKNameBatchTest, GivesAllNamesInTheOrderOfTheirBytes) {
    int reads = 0;
    EXPECT_EQ(allOf({"b", "\xff", "a", "B", "a\nb"}, 4096, reads),
              (std::vector<std::string>{"B", "a", "a\nb", "b", "\xff"}));
    EXPECT_EQ(reads, 1);
    EXPECT_TRUE(allOf({}, 4096, reads).empty());
}

TEST(ZPKNameBatchTest, MoreNamesThanFitTakeMoreReadings) {
    const std::vector<std::string> folder = shuffled(1000);
    int reads = 0;
    EXPECT_EQ(allOf(folder, 9200, reads), sorted(folder));
    EXPECT_GE(reads, 10);
    EXPECT_LE(reads, 13);
}

TEST(ZPKNameBatchTest, OneNameAlwaysFits) {
    int reads = 0;
    EXPECT_EQ(allOf(shuffled(5), 1, reads), sorted(shuffled(5)));
    EXPECT_EQ(reads, 5);
}

TEST(ZPKNameBatchTest, WhatIsForgottenComesBack) {
    int reads = 0;
    EXPECT_EQ(allOf(shuffled(50), 100000, reads, true), sorted(shuffled(50)));
    EXPECT_EQ(reads, 17);
}

}  // namespace
