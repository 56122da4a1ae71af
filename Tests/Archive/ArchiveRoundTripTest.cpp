// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>

#include "Tests/Archive/ArchiveFixture.h"

namespace {

namespace fs = std::filesystem;
using namespace zpk_test;

/// A folder with every kind of thing that an archive carries.
void makeTree(const std::string& root) {
    writeFile(root + "/plain.txt", "hello\n");
    writeFile(root + "/empty", "");
    writeFile(root + "/large.bin", randomText(3 * 1024 * 1024 + 17, 1));
    writeFile(root + "/sub/deeper/program", "#!/bin/sh\n");
    writeFile(root + "/linked", "one file, three names\n");
    fs::create_hard_link(root + "/linked", root + "/sub/linked too");
    fs::create_hard_link(root + "/linked", root + "/zz");
    fs::create_symlink("plain.txt", root + "/to plain");
    fs::create_symlink("/nowhere/at all", root + "/dangling");
    fs::create_symlink("../..", root + "/sub/upwards");
    writeFile(root + "/name\nwith newline", "n");
    writeFile(root + "/not \xff\xfe utf-8", "x");
    writeFile(root + "/-c", "an option's name");
    writeFile(root + "/" + std::string(255, 'L'), "long");
    fs::create_directories(root + "/empty folder");
    writeFile(root + "/readonly/inside", "kept");
    chmod((root + "/sub/deeper/program").c_str(), 0755);
    chmod((root + "/plain.txt").c_str(), 0640);
    // Root alone packs a file that its owner may not read.
    chmod((root + "/empty").c_str(), geteuid() == 0 ? 0 : 0400);
    chmod((root + "/empty folder").c_str(), 01777);
    time_t time = 1000000001;
    for (const char* name : {"/plain.txt", "/to plain", "/large.bin", "/empty folder", "/readonly", "/sub"}) {
        setTime(root + name, time);
        time += 3600;
    }
    chmod((root + "/readonly").c_str(), 0555);
}

class ArchiveRoundTripTest : public ::testing::Test {
protected:
    void SetUp() override { makeTree(m_tree); }
    void TearDown() override { chmod((m_tree + "/readonly").c_str(), 0755); }

    TemporaryFolder m_folder;
    std::string m_tree = m_folder / "Data";
    std::string m_archive = m_folder / "Data.dat";
    std::string m_target = m_folder / "out";
};

TEST_F(ArchiveRoundTripTest, EverythingComesBack) {
    Outcome created = create(m_tree, m_archive);
    EXPECT_EQ(created.exitStatus, 0) << created.standardError;
    Outcome extracted = extract(m_archive, m_target);
    EXPECT_EQ(extracted.exitStatus, 0) << extracted.standardError;
    EXPECT_EQ(created.standardError + extracted.standardError, "");
    EXPECT_EQ(snapshot(m_tree), snapshot(m_target + "/Data"));
}

TEST_F(ArchiveRoundTripTest, ExtractingTwiceOverItselfGivesTheSame) {
    ASSERT_EQ(create(m_tree, m_archive).exitStatus, 0);
    ASSERT_EQ(extract(m_archive, m_target).exitStatus, 0);
    Outcome again = extract(m_archive, m_target);
    EXPECT_EQ(again.exitStatus, 0) << again.standardError;
    EXPECT_EQ(snapshot(m_tree), snapshot(m_target + "/Data"));
}

TEST_F(ArchiveRoundTripTest, SameTreeGivesSameBytes) {
    std::string copy = m_folder / "elsewhere/Data";
    fs::create_directories(m_folder / "elsewhere");
    shell("cp -a '" + m_tree + "' '" + copy + "'");
    ASSERT_EQ(create(m_tree, m_archive).exitStatus, 0);
    ASSERT_EQ(create(copy, m_folder / "second.dat").exitStatus, 0);
    EXPECT_TRUE(readFile(m_archive) == readFile(m_folder / "second.dat"));
}

TEST_F(ArchiveRoundTripTest, ListNamesMembersInOrderWithoutTouchingDisk) {
    ASSERT_EQ(create(m_tree, m_archive).exitStatus, 0);
    KeepingSink sink;
    std::vector<std::string> names;
    std::map<std::string, zpk_archive::MemberDescription> members;
    bool good = zpk_archive::list(
        m_archive,
        [&](const zpk_archive::MemberDescription& member) {
            names.push_back(member.name);
            members[member.name] = member;
        },
        sink);
    EXPECT_TRUE(good);
    ASSERT_FALSE(names.empty());
    EXPECT_EQ(names.front(), "Data");
    EXPECT_EQ(names.size(), snapshot(m_tree).size() + 1);
    EXPECT_EQ(members["Data/large.bin"].size, 3U * 1024 * 1024 + 17);
    EXPECT_EQ(members["Data/large.bin"].type, zpk_archive::MemberType::RegularFile);
    EXPECT_EQ(members["Data/plain.txt"].permissions, 0640U);
    EXPECT_EQ(members["Data/to plain"].type, zpk_archive::MemberType::SymbolicLink);
    EXPECT_EQ(members["Data/to plain"].linkTarget, "plain.txt");
    EXPECT_EQ(members["Data/zz"].type, zpk_archive::MemberType::HardLink);
    EXPECT_EQ(members["Data/zz"].linkTarget, "Data/linked");
    EXPECT_EQ(members["Data/empty folder"].type, zpk_archive::MemberType::Folder);
    EXPECT_FALSE(fs::exists(m_target));
}

TEST_F(ArchiveRoundTripTest, SystemToolsUnpackOurs) {
    ASSERT_EQ(create(m_tree, m_archive).exitStatus, 0);
    struct Row {
        const char* program;
        std::string line;
    };
    const std::string in = " < '" + m_archive + "'";
    for (const Row& row : std::vector<Row>{
             {"cpio", "gzip -dc" + in + " | cpio -idm --quiet 2>/dev/null"},
             {"bsdtar", "bsdtar -xpf '" + m_archive + "'"},
             {"pigz", "pigz -dc" + in + " | bsdtar -xpf -"},
         }) {
        if (!hasProgram(row.program)) {
            GTEST_SKIP() << row.program << " is not installed";
        }
        SCOPED_TRACE(row.program);
        std::string target = m_folder / (std::string("by ") + row.program);
        fs::create_directories(target);
        shell("cd '" + target + "'; umask 0; " + row.line);
        // GNU cpio sets no times of links, and not all of folders.
        EXPECT_EQ(snapshot(m_tree, false), snapshot(target + "/Data", false));
        chmod((target + "/Data/readonly").c_str(), 0755);
    }
}

struct Packing {
    const char* name;
    const char* program;
    const char* line;
};

class ForeignArchiveTest : public ArchiveRoundTripTest, public ::testing::WithParamInterface<Packing> {};

TEST_P(ForeignArchiveTest, UnpacksToTheSameTree) {
    if (!hasProgram(GetParam().program)) {
        GTEST_SKIP() << GetParam().program << " is not installed";
    }
    setenv("ARCHIVE", m_archive.c_str(), 1);
    shell("cd '" + m_folder.path() + "'; " + GetParam().line);
    Outcome extracted = extract(m_archive, m_target);
    EXPECT_EQ(extracted.exitStatus, 0) << extracted.standardError;
    EXPECT_EQ(snapshot(m_tree), snapshot(m_target + "/Data"));
}

INSTANTIATE_TEST_SUITE_P(
    Packings, ForeignArchiveTest,
    ::testing::Values(
        Packing{"Odc", "cpio", "find Data -print0 | cpio -0 -o --quiet 2>/dev/null -H odc | gzip > $ARCHIVE"},
        Packing{"Newc", "cpio",
                "find Data -print0 | cpio -0 -o --quiet 2>/dev/null -H newc | gzip > $ARCHIVE"},
        Packing{"Crc", "cpio", "find Data -print0 | cpio -0 -o --quiet 2>/dev/null -H crc | gzip > $ARCHIVE"},
        Packing{"Binary", "cpio",
                "find Data -print0 | cpio -0 -o --quiet 2>/dev/null -H bin | gzip > $ARCHIVE"},
        Packing{"FoldersAfterTheirContents", "cpio",
                "find Data -depth -print0 | cpio -0 -o --quiet 2>/dev/null -H newc | gzip > $ARCHIVE"},
        Packing{"NamesWithDotSlash", "cpio",
                "find ./Data -print0 | cpio -0 -o --quiet 2>/dev/null -H odc | gzip > $ARCHIVE"},
        Packing{"BsdtarOdc", "bsdtar", "bsdtar --format cpio -cf - Data | gzip > $ARCHIVE"},
        Packing{"BsdtarNewc", "bsdtar", "bsdtar --format newc -cf - Data | gzip > $ARCHIVE"},
        Packing{"Pigz", "pigz", "bsdtar --format cpio -cf - Data | pigz > $ARCHIVE"},
        Packing{"PigzIndependentFast", "pigz", "bsdtar --format cpio -cf - Data | pigz -1 -i > $ARCHIVE"},
        Packing{"StoredBlocks", "pigz", "bsdtar --format cpio -cf - Data | pigz -0 > $ARCHIVE"},
        Packing{"GzipHeaderWithNameAndTime", "gzip",
                "bsdtar --format cpio -cf inner Data; gzip inner; mv inner.gz $ARCHIVE"},
        Packing{"SeveralGzipMembers", "gzip",
                "bsdtar --format cpio -cf plain Data; split -b 100003 plain part.; rm -f $ARCHIVE;"
                "for p in part.*; do gzip -c $p >> $ARCHIVE; done"},
        Packing{"EmptyGzipMembersBetween", "gzip",
                "bsdtar --format cpio -cf plain Data; split -b 1000003 plain part.; rm -f $ARCHIVE;"
                "for p in part.*; do gzip -c $p >> $ARCHIVE; gzip -c < /dev/null >> $ARCHIVE; done"},
        Packing{"ZerosAfterTheLastGzipMember", "gzip",
                "bsdtar --format cpio -cf - Data | gzip > $ARCHIVE; head -c 100000 /dev/zero >> $ARCHIVE"},
        Packing{"ZerosAfterTheEndMark", "gzip",
                "(bsdtar --format cpio -cf - Data; head -c 5000000 /dev/zero) | gzip > $ARCHIVE"},
        Packing{"Plain", "bsdtar", "bsdtar --format cpio -cf $ARCHIVE Data"},
        Packing{"PlainNewcFromCpio", "cpio",
                "find Data -print0 | cpio -0 -o --quiet 2>/dev/null -H newc > $ARCHIVE"},
        Packing{"Bzip2", "bzip2", "bsdtar --format cpio -cf - Data | bzip2 > $ARCHIVE"},
        Packing{"SeveralBzip2Streams", "bzip2",
                "bsdtar --format cpio -cf plain Data; split -b 700003 plain part.; rm -f $ARCHIVE;"
                "for p in part.*; do bzip2 -c $p >> $ARCHIVE; done"}),
    [](const auto& row) { return std::string(row.param.name); });

/// The other byte order of a binary archive: each header is thirteen 16-bit words.
std::string swapHeaders(std::string archive) {
    auto word = [&](std::size_t at) {
        return static_cast<std::size_t>(static_cast<unsigned char>(archive[at])) |
               static_cast<std::size_t>(static_cast<unsigned char>(archive[at + 1])) << 8;
    };
    for (std::size_t at = 0; at + 26 <= archive.size() && word(at) == 070707;) {
        std::size_t nameSize = word(at + 20);
        std::size_t size = word(at + 22) << 16 | word(at + 24);
        for (std::size_t i = at; i < at + 26; i += 2) {
            std::swap(archive[i], archive[i + 1]);
        }
        at += 26 + nameSize + nameSize % 2 + size + size % 2;
    }
    return archive;
}

TEST_F(ArchiveRoundTripTest, BinaryArchiveOfTheOtherByteOrder) {
    if (!hasProgram("cpio")) {
        GTEST_SKIP() << "cpio is not installed";
    }
    shell("cd '" + m_folder.path() + "'; find Data -print0 | cpio -0 -o --quiet 2>/dev/null -H bin > little");
    std::string little = readFile(m_folder / "little");
    std::string big = swapHeaders(little);
    ASSERT_EQ(big.substr(0, 2), std::string("\x71\xc7"));
    writeFile(m_archive, big);
    Outcome extracted = extract(m_archive, m_target);
    EXPECT_EQ(extracted.exitStatus, 0) << extracted.standardError;
    EXPECT_EQ(snapshot(m_tree), snapshot(m_target + "/Data"));
}

TEST_F(ArchiveRoundTripTest, WhatFollowsTheEndMarkIsToldAndWhatCameBeforeIsThere) {
    shell("cd '" + m_folder.path() + "'; bsdtar --format cpio -cf plain Data");
    ASSERT_EQ(create(m_tree, m_archive).exitStatus, 0);
    struct Row {
        const char* name;
        const char* line;
        const char* reason;
    };
    for (const Row& row : {
             Row{"archive", "cat Data.dat; gzip -c < plain", "a second archive follows the first"},
             Row{"own archive", "cat Data.dat Data.dat", "a second archive follows the first"},
             Row{"plain archive", "cat plain plain", "a second archive follows the first"},
             Row{"rubbish", "(cat plain; head -c 3000000 /dev/zero; printf rubbish) | gzip",
                 "bytes that are no archive's follow the end mark"},
             Row{"one byte", "cat plain; printf x", "bytes that are no archive's follow the end mark"},
         }) {
        SCOPED_TRACE(row.name);
        shell("cd '" + m_folder.path() + "'; (" + row.line + ") > both");
        chmod((m_target + "/Data/readonly").c_str(), 0755);
        fs::remove_all(m_target);
        const Outcome extracted = extract(m_folder / "both", m_target);
        EXPECT_EQ(extracted.exitStatus, 1);
        EXPECT_EQ(extracted.standardError, "ditto: " + (m_folder / "both") + ": " + row.reason + "\n");
        EXPECT_EQ(snapshot(m_tree), snapshot(m_target + "/Data"));
    }
}

}  // namespace
