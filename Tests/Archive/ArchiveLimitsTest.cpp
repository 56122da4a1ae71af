// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <filesystem>

#include "Tests/Archive/HostileArchiveFixture.h"

namespace {

namespace fs = std::filesystem;
using namespace zpk_test;

TEST_F(HostileArchiveTest, FullDiskIsAnErrorAndLeavesNoHalfFile) {
    std::string big(3000000, '\1');
    writeFile(m_folder / "archive",
              makeOdc({{"small", kFile, "small"}, {"big", kFile, big}, {"after", kFile, "after"}}));
    std::string disk = m_folder / "in/disk";
    fs::create_directory(disk);
    if (geteuid() != 0 ||
        std::system(("mount -t tmpfs -o size=1m none '" + disk + "' 2>/dev/null").c_str()) != 0) {
        GTEST_SKIP() << "cannot mount a small file system";
    }
    Outcome outcome = extract(m_folder / "archive", disk);
    EXPECT_EQ(outcome.exitStatus, 1);
    EXPECT_EQ(outcome.standardError, "ditto: big: No space left on device\n");
    EXPECT_EQ(readFile(disk + "/small"), "small");
    EXPECT_FALSE(fs::exists(disk + "/big"));
    EXPECT_FALSE(fs::exists(disk + "/after")) << "nothing is tried after the disk is full";
    std::string random = m_folder / "in/random";
    shell("mkdir '" + random + "'; head -c 5000000 /dev/urandom > '" + random + "/r'");
    Outcome packed = create(random, disk + "/new.dat");
    EXPECT_EQ(packed.exitStatus, 1);
    EXPECT_NE(packed.standardError.find("No space left on device"), std::string::npos);
    EXPECT_EQ(snapshot(disk).size(), 1U);
    shell("umount '" + disk + "'");
}

TEST_F(HostileArchiveTest, FileSizeLimitIsAnErrorToo) {
    writeFile(m_folder / "archive",
              makeOdc({{"big", kFile, std::string(100000, '\1')}, {"after", kFile, "after"}}));
    auto limit = [] {
        rlimit small{50000, 50000};
        setrlimit(RLIMIT_FSIZE, &small);
    };
    Outcome outcome = extract(m_folder / "archive", m_folder / "in", limit);
    EXPECT_EQ(outcome.exitStatus, 1);
    EXPECT_EQ(outcome.standardError, "ditto: big: File too large\n");
    EXPECT_EQ(readFile(m_folder / "in/after"), "after");
}

TEST_F(HostileArchiveTest, FullDiskNeverHoldsUpPackingOfMoreThanIsInWork) {
    const std::string disk = m_folder / "in/disk";
    fs::create_directory(disk);
    if (geteuid() != 0 ||
        std::system(("mount -t tmpfs -o size=1m none '" + disk + "' 2>/dev/null").c_str()) != 0) {
        GTEST_SKIP() << "cannot mount a small file system";
    }
    // More than all blocks that can be between reading and writing, and no smaller packed.
    const std::string tree = m_folder / "in/D";
    shell("mkdir '" + tree + "'; head -c 40000000 /dev/urandom > '" + tree + "/r'");
    const Outcome packed = runProgram(
        {ZPK_DITTO, "-c", "-z", "-rsrc", "--keepParent", tree, disk + "/new.dat"}, [] { alarm(60); });
    EXPECT_EQ(packed.exitStatus, 1);
    EXPECT_EQ(packed.standardError, "ditto: " + disk + "/new.dat: No space left on device\n");
    EXPECT_TRUE(fs::is_empty(disk));
    shell("umount '" + disk + "'");
}

TEST_F(HostileArchiveTest, FileSizeLimitNeverHoldsUpPackingEither) {
    const std::string tree = m_folder / "in/D";
    shell("mkdir '" + tree + "'; head -c 40000000 /dev/urandom > '" + tree + "/r'");
    const Outcome packed =
        runProgram({ZPK_DITTO, "-c", "-z", "-rsrc", "--keepParent", tree, m_folder / "in/new.dat"}, [] {
            const rlimit small{1 << 20, 1 << 20};
            setrlimit(RLIMIT_FSIZE, &small);
            alarm(60);
        });
    EXPECT_EQ(packed.exitStatus, 1);
    EXPECT_EQ(packed.standardError, "ditto: " + (m_folder / "in/new.dat") + ": File too large\n");
    EXPECT_EQ(std::distance(fs::directory_iterator(m_folder / "in"), fs::directory_iterator()), 1);
}

TEST_F(HostileArchiveTest, NoInodeLeftIsOneErrorAndTheEnd) {
    std::vector<RawMember> members;
    for (int i = 0; i < 100; ++i) {
        members.push_back({"f" + std::to_string(i), kFile, "x"});
    }
    writeFile(m_folder / "archive", makeOdc(members));
    const std::string disk = m_folder / "in/disk";
    fs::create_directory(disk);
    if (geteuid() != 0 ||
        std::system(("mount -t tmpfs -o size=1m,nr_inodes=20 none '" + disk + "' 2>/dev/null").c_str()) !=
            0) {
        GTEST_SKIP() << "cannot mount a small file system";
    }
    const Outcome outcome = extract(m_folder / "archive", disk, [] { alarm(60); });
    EXPECT_EQ(outcome.exitStatus, 1);
    const std::size_t made = snapshot(disk).size();
    EXPECT_GT(made, 0U);
    EXPECT_EQ(outcome.standardError, "ditto: f" + std::to_string(made) + ": No space left on device\n");
    shell("umount '" + disk + "'");
}

TEST_F(HostileArchiveTest, PipeThatNobodyReadsNeverBlocks) {
    std::vector<RawMember> members;
    for (int i = 0; i < 3000; ++i) {
        members.push_back({"../" + std::string(150, 'n') + std::to_string(i), kFile, "x"});
    }
    writeFile(m_folder / "archive", makeOdc(members));
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    ASSERT_GE(fcntl(ends[1], F_SETPIPE_SZ, 4096), 4096);
    Outcome outcome = extract(m_folder / "archive", m_folder / "in", [&] {
        dup2(ends[1], STDERR_FILENO);
        alarm(30);
    });
    close(ends[0]);
    close(ends[1]);
    EXPECT_EQ(outcome.exitStatus, 1);
}

TEST_F(HostileArchiveTest, ClosedStandardErrorIsNoReasonToStop) {
    writeFile(m_folder / "archive", makeOdc({{"../x", kFile, "x"}, {"good", kFile, "good"}}));
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    close(ends[0]);
    EXPECT_EQ(
        extract(m_folder / "archive", m_folder / "in", [&] { dup2(ends[1], STDERR_FILENO); }).exitStatus, 1);
    EXPECT_EQ(readFile(m_folder / "in/good"), "good");
    fs::remove_all(m_folder / "in");
    EXPECT_EQ(extract(m_folder / "archive", m_folder / "in", [] { close(STDERR_FILENO); }).exitStatus, 1);
    EXPECT_EQ(readFile(m_folder / "in/good"), "good");
    close(ends[1]);
}

TEST_F(HostileArchiveTest, MemoryStaysSmallForALargePayload) {
    std::string tree = m_folder / "in/Data";
    for (int i = 0; i < 3; ++i) {
        shell("mkdir -p '" + tree + "'; yes 'a line of text that repeats " + std::to_string(i) +
              "' | head -c 100000000 > '" + tree + "/" + std::to_string(i) + "'");
    }
    Outcome packed = create(tree, m_folder / "archive");
    ASSERT_EQ(packed.exitStatus, 0);
    Outcome own = extract(m_folder / "archive", m_folder / "in/own");
    shell("gzip -dc '" + (m_folder / "archive") + "' | gzip -1 > '" + (m_folder / "in/foreign") + "'");
    Outcome foreign = extract(m_folder / "in/foreign", m_folder / "in/foreign out");
    EXPECT_EQ(own.exitStatus + foreign.exitStatus, 0);
    for (const Outcome& outcome : {packed, own, foreign}) {
        EXPECT_LT(outcome.peakMemory, 64 * 1024);
    }
    EXPECT_EQ(fs::file_size(m_folder / "in/own/Data/2"), 100000000U);
}

}  // namespace
