// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/LinkTable.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "Archive/Member.h"

namespace {

using zpk_archive::LinkTable;
using zpk_archive::Member;

Member memberWith(std::uint64_t inode, unsigned linkCount, std::int64_t size = 5) {
    Member member;
    member.mode = S_IFREG | 0644;
    member.inode = inode;
    member.linkCount = linkCount;
    member.size = size;
    return member;
}

TEST(LinkTableTest, ForgetsAFileAfterItsLastName) {
    LinkTable table;
    const Member member = memberWith(7, 3);
    EXPECT_EQ(table.find(member), nullptr);
    table.remember(member, "first", {});
    for (int name = 2; name <= 3; ++name) {
        LinkTable::File* const file = table.find(member);
        ASSERT_NE(file, nullptr) << name;
        EXPECT_EQ(file->name, "first");
        table.countName(member, *file);
    }
    EXPECT_EQ(table.find(member), nullptr);
}

TEST(LinkTableTest, TellsStrangersWithOneNumberApart) {
    LinkTable table;
    const Member member = memberWith(7, 2);
    table.remember(member, "first", {});
    Member otherMode = member;
    otherMode.mode = S_IFREG | 0600;
    Member otherTime = member;
    otherTime.modifiedSeconds = 1;
    Member otherDevice = member;
    otherDevice.device = 1;
    Member alone = member;
    alone.linkCount = 1;
    for (const Member& stranger : {otherMode, otherTime, otherDevice, alone, memberWith(8, 2)}) {
        EXPECT_EQ(table.find(stranger), nullptr);
    }
    EXPECT_NE(table.find(member), nullptr);
}

TEST(LinkTableTest, StartsAnewWhenItIsFull) {
    LinkTable table;
    const std::string name(100000, 'n');
    for (std::uint64_t inode = 1; inode <= 62; ++inode) {
        table.remember(memberWith(inode, 2), name, {});
    }
    EXPECT_NE(table.find(memberWith(1, 2)), nullptr);
    table.remember(memberWith(63, 2), name, {});
    EXPECT_EQ(table.find(memberWith(1, 2)), nullptr);
    EXPECT_NE(table.find(memberWith(63, 2)), nullptr);
    EXPECT_FALSE(table.hasForgottenEmptyFiles());
    for (std::uint64_t inode = 1; inode <= 70; ++inode) {
        table.remember(memberWith(inode, 2, 0), name, {});
    }
    EXPECT_TRUE(table.hasForgottenEmptyFiles());
}

TEST(LinkTableTest, ShorterNameIsPreferredAndMakesRoom) {
    LinkTable table;
    table.remember(memberWith(1, 2), "kept", {});
    for (std::uint64_t inode = 2; inode <= 500; ++inode) {
        const Member member = memberWith(inode, 3);
        table.remember(member, std::string(100000, 'n'), {});
        LinkTable::File& file = *table.find(member);
        table.preferName(file, "short");
        table.preferName(file, "not so short");
        EXPECT_EQ(file.name, "short");
    }
    EXPECT_NE(table.find(memberWith(1, 2)), nullptr);
}

TEST(LinkTableTest, NamesThatHaveComeMakeRoom) {
    LinkTable table;
    const std::string name(100000, 'n');
    table.remember(memberWith(1, 2), "kept", {});
    for (std::uint64_t inode = 2; inode <= 500; ++inode) {
        const Member member = memberWith(inode, 2);
        table.remember(member, name, {});
        table.remember(member, name, {});
        table.countName(member, *table.find(member));
    }
    EXPECT_NE(table.find(memberWith(1, 2)), nullptr);
}

}  // namespace
