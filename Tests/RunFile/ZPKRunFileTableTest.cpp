// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "RunFile/ZPKRunFileTable.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

namespace {

using Kind = ZPKRunFileEntry::Kind;

constexpr std::uint64_t kDataSize = 1000;

/// A bundle with a packed file, a stored one and a link.
ZPKRunFileTable goodTable() {
    ZPKRunFileTable table;
    table.program = "A.app/large";
    table.blocks.push_back({100, 50, 200, 7});
    table.entries.push_back({Kind::Folder, 0755, "A.app", 0, 0, 0, {}, ""});
    table.entries.push_back({Kind::PackedFile, 0644, "A.app/small", 200, 0, 0, {}, ""});
    table.entries.push_back({Kind::StoredFile, 0755, "A.app/large", 300, 700, 0, {11}, ""});
    table.entries.push_back({Kind::Link, 0777, "A.app/link", 0, 0, 0, {}, "small"});
    return table;
}

bool isTaken(const ZPKRunFileTable& table) {
    return static_cast<bool>(ZPKRunFileTable::decoded(table.encoded(), kDataSize, "file.run"));
}

TEST(ZPKRunFileTableTest, ComesBackAsItWas) {
    const std::string bytes = goodTable().encoded();
    const ZPKResult<ZPKRunFileTable> table = ZPKRunFileTable::decoded(bytes, kDataSize, "file.run");
    ASSERT_TRUE(table);
    EXPECT_EQ(table->encoded(), bytes);
    ASSERT_EQ(table->entries.size(), 4u);
    EXPECT_EQ(table->entries[2].path, "A.app/large");
    EXPECT_EQ(table->program, "A.app/large");
    EXPECT_EQ(table->entries[2].checksums, std::vector<std::uint64_t>{11});
    EXPECT_EQ(table->entries[3].target, "small");
}

TEST(ZPKRunFileTableTest, EveryTruncationIsRefused) {
    const std::string bytes = goodTable().encoded();
    for (std::size_t length = 0; length < bytes.size(); ++length) {
        EXPECT_FALSE(ZPKRunFileTable::decoded(bytes.substr(0, length), kDataSize, "file.run")) << length;
    }
    EXPECT_FALSE(ZPKRunFileTable::decoded(bytes + "x", kDataSize, "file.run"));
}

TEST(ZPKRunFileTableTest, PathsStayInsideAndBelowNamedFolders) {
    for (const std::string& path :
         {std::string(), std::string("/A.app/x"), std::string("A.app/../x"), std::string(".."),
          std::string("A.app//x"), std::string("A.app/"), std::string("A.app/./x"), std::string("B.app/x"),
          std::string("A.app/small/x"), std::string("A.app/link/x"), std::string("A.app/small"),
          std::string("A.app/a\0b", 9)}) {
        ZPKRunFileTable table = goodTable();
        table.entries.push_back({Kind::PackedFile, 0644, path, 1, 0, 0, {}, ""});
        EXPECT_FALSE(isTaken(table)) << path;
    }
}

TEST(ZPKRunFileTableTest, PlacesStayInsideTheFile) {
    const std::function<void(ZPKRunFileTable&)> changes[] = {
        [](ZPKRunFileTable& table) { table.blocks[0].offset = kDataSize; },
        [](ZPKRunFileTable& table) { table.blocks[0].packedSize = kDataSize; },
        [](ZPKRunFileTable& table) { table.blocks[0].offset = static_cast<std::uint64_t>(-10); },
        [](ZPKRunFileTable& table) { table.blocks[0].plainSize = ZPKRunFileTable::kLargestBlock + 1; },
        [](ZPKRunFileTable& table) { table.entries[1].block = 1; },
        [](ZPKRunFileTable& table) { table.entries[1].size = 201; },
        [](ZPKRunFileTable& table) { table.entries[1].offset = static_cast<std::uint64_t>(-1); },
        [](ZPKRunFileTable& table) {
            // The sum of the two is nothing.
            table.entries[1].offset = 10;
            table.entries[1].size = static_cast<std::uint64_t>(-10);
        },
        [](ZPKRunFileTable& table) { table.entries[2].size = 301; },
        [](ZPKRunFileTable& table) { table.entries[2].checksums.clear(); },
        [](ZPKRunFileTable& table) { table.entries[2].checksums.push_back(1); },
        [](ZPKRunFileTable& table) { table.entries[3].target.clear(); },
        [](ZPKRunFileTable& table) { table.entries[3].target = std::string("a\0b", 3); },
    };
    ASSERT_TRUE(isTaken(goodTable()));
    for (std::size_t index = 0; index < std::size(changes); ++index) {
        ZPKRunFileTable table = goodTable();
        changes[index](table);
        EXPECT_FALSE(isTaken(table)) << index;
    }
}

TEST(ZPKRunFileTableTest, WhatIsStartedIsOneOfItsFiles) {
    for (const char* const program :
         {"", "A.app", "A.app/link", "A.app/other", "/bin/sh", "A.app/../A.app/large"}) {
        ZPKRunFileTable table = goodTable();
        table.program = program;
        EXPECT_FALSE(isTaken(table)) << program;
    }
}

TEST(ZPKRunFileTableTest, SetIdentityBitsDoNotComeThrough) {
    ZPKRunFileTable table = goodTable();
    table.entries[1].mode = 06755;
    const ZPKResult<ZPKRunFileTable> taken = ZPKRunFileTable::decoded(table.encoded(), kDataSize, "file.run");
    ASSERT_TRUE(taken);
    EXPECT_EQ(taken->entries[1].mode, 0755u);
}

}  // namespace
