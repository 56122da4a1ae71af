// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include <sys/resource.h>
#include <unistd.h>

#include <filesystem>

#include "Tests/Archive/HostileArchiveFixture.h"

namespace {

namespace fs = std::filesystem;
using namespace zpk_test;

/// So many that threads make the first of them.
std::vector<RawMember> smallFiles(int count, const std::string& prefix = "f", std::size_t size = 10) {
    std::vector<RawMember> members;
    for (int i = 0; i < count; ++i) {
        members.push_back({prefix + std::to_string(i), kFile, std::string(size, 'x')});
    }
    return members;
}

/// Members that come behind files which their threads are held up at.
class HeldArchiveTest : public HostileArchiveTest {
protected:
    void SetUp() override {
        HostileArchiveTest::SetUp();
#ifdef __SANITIZE_ADDRESS__
        GTEST_SKIP() << "the sanitizer cannot be traced";
#endif
        const std::string probe = "strace -f -o /dev/null -e trace=none true 2>/dev/null";
        if (!hasProgram("strace") || std::system(probe.c_str()) != 0) {
            GTEST_SKIP() << "strace is not installed, or processes cannot be traced here";
        }
    }

    Outcome extractTraced(const std::vector<RawMember>& members, const std::string& injection) {
        writeFile(m_folder / "archive", makeOdc(members));
        return runProgram({"strace", "-f", "-o", m_folder / "in/trace", "-e", "trace=clone,pwrite64", "-e",
                           "inject=" + injection, ZPK_DITTO, "-x", "-z", "--rsrc", m_folder / "archive",
                           m_folder / "in/out"});
    }

    /// The first file of each thread takes so long that what the rule does not hold back comes first.
    Outcome extractHeld(const RawMember& last) {
        std::vector<RawMember> members = smallFiles(64);
        members.push_back(last);
        return extractTraced(members, "pwrite64:delay_enter=300000:when=1");
    }
};

TEST_F(HeldArchiveTest, FolderReplacesAFileInFlight) {
    EXPECT_EQ(extractHeld({"f50", kFolder}).standardError, "");
    EXPECT_TRUE(fs::is_directory(m_folder / "in/out/f50"));
}

TEST_F(HeldArchiveTest, FileReplacesAFileInFlight) {
    EXPECT_EQ(extractHeld({"f50", kFile, "later"}).standardError, "");
    EXPECT_EQ(readFile(m_folder / "in/out/f50"), "later");
}

TEST_F(HeldArchiveTest, NothingComesBelowAFileInFlight) {
    const Outcome outcome = extractHeld({"f50/below", kFile, "later"});
    EXPECT_EQ(outcome.standardError, "ditto: f50/below: a part of its path is no folder\n");
    EXPECT_EQ(readFile(m_folder / "in/out/f50"), "xxxxxxxxxx");
}

TEST_F(HeldArchiveTest, FullDiskEndsTheWorkWhereItWouldHaveEndedOneByOne) {
    const std::string disk = m_folder / "in/out";
    fs::create_directory(disk);
    if (geteuid() != 0 ||
        std::system(("mount -t tmpfs -o size=1m none '" + disk + "' 2>/dev/null").c_str()) != 0) {
        GTEST_SKIP() << "cannot mount a small file system";
    }
    const Outcome outcome = extractTraced(smallFiles(1000, "f", 4000), "pwrite64:delay_enter=300000:when=1");
    const std::size_t made = snapshot(disk).size();
    EXPECT_GT(made, 100U);
    EXPECT_EQ(outcome.standardError, "ditto: f" + std::to_string(made) + ": No space left on device\n");
    shell("umount '" + disk + "'");
}

TEST_F(HeldArchiveTest, WithoutAThreadTheFilesAreMadeAllTheSame) {
    // The first thread of the main one reads.
    const Outcome outcome = extractTraced(smallFiles(500), "clone:error=EAGAIN:when=2");
    EXPECT_EQ(outcome.exitStatus, 0) << outcome.standardError;
    EXPECT_EQ(snapshot(m_folder / "in/out").size(), 500U);
}

TEST_F(HostileArchiveTest, FailuresAmongSmallFilesAreToldInTheirOrder) {
    letNobodyIn();
    shell("mkdir '" + (m_folder / "in/shut") + "'");
    std::vector<RawMember> members;
    std::string expected;
    for (int i = 0; i < 500; ++i) {
        const bool isRefused = i % 50 == 7;
        const std::string name = (isRefused ? "shut/" : "open/") + std::to_string(i);
        members.push_back({name, kFile, "x"});
        expected += isRefused ? "ditto: " + name + ": Permission denied\n" : "";
        if (i % 100 == 30) {
            members.push_back({"../" + std::to_string(i), kFile, "x"});
            expected += "ditto: ../" + std::to_string(i) + ": the name climbs out of the folder\n";
        }
    }
    writeFile(m_folder / "archive", makeOdc(members));
    if (geteuid() != 0) {
        shell("chmod 555 '" + (m_folder / "in/shut") + "'");
    }
    const Outcome outcome = extract(m_folder / "archive", m_folder / "in", becomeNobody);
    EXPECT_EQ(outcome.exitStatus, 1);
    EXPECT_EQ(outcome.standardError, expected);
    EXPECT_EQ(snapshot(m_folder / "in/open").size(), 490U);
}

TEST_F(HostileArchiveTest, DiskThatFillsUpAmongSmallFilesIsOneErrorAndTheEnd) {
    writeFile(m_folder / "archive", makeOdc(smallFiles(1000, "f", 4000)));
    const std::string disk = m_folder / "in/disk";
    fs::create_directory(disk);
    if (geteuid() != 0 ||
        std::system(("mount -t tmpfs -o size=1m none '" + disk + "' 2>/dev/null").c_str()) != 0) {
        GTEST_SKIP() << "cannot mount a small file system";
    }
    const Outcome outcome = extract(m_folder / "archive", disk, [] { alarm(60); });
    EXPECT_EQ(outcome.exitStatus, 1);
    const std::size_t made = snapshot(disk).size();
    EXPECT_GT(made, 100U);
    EXPECT_EQ(outcome.standardError, "ditto: f" + std::to_string(made) + ": No space left on device\n");
    for (std::size_t i = 0; i < made; ++i) {
        EXPECT_EQ(readFile(disk + "/f" + std::to_string(i)).size(), 4000U) << i;
    }
    shell("umount '" + disk + "'");
}

TEST_F(HostileArchiveTest, FewDescriptorsAreEnoughForManyFolders) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizer opens descriptors of its own to look at an object";
#endif
    std::vector<RawMember> members;
    for (int i = 0; i < 400; ++i) {
        members.push_back({std::to_string(i) + "/file", kFile, "x"});
    }
    writeFile(m_folder / "archive", makeOdc(members));
    const Outcome outcome = extract(m_folder / "archive", m_folder / "in", [] {
        const rlimit few{12, 12};
        setrlimit(RLIMIT_NOFILE, &few);
    });
    EXPECT_EQ(outcome.standardError, "");
    EXPECT_EQ(snapshot(m_folder / "in").size(), 800U);
}

TEST_F(HostileArchiveTest, DamageBehindSmallFilesLeavesThemThere) {
    std::string archive = makeOdc(smallFiles(100));
    archive.replace(archive.rfind("070707"), 6, "broken");
    writeFile(m_folder / "archive", archive);
    const Outcome outcome = extract(m_folder / "archive", m_folder / "in");
    EXPECT_EQ(outcome.exitStatus, 1);
    EXPECT_EQ(snapshot(m_folder / "in").size(), 100U);
}

TEST_F(HostileArchiveTest, TreeOfSmallFilesIsReplacedByAnother) {
    std::vector<RawMember> members = smallFiles(300);
    for (int i = 0; i < 2; ++i) {
        writeFile(m_folder / "archive", makeOdc(members));
        const Outcome outcome = extract(m_folder / "archive", m_folder / "in");
        EXPECT_EQ(outcome.standardError, "");
        for (RawMember& member : members) {
            EXPECT_EQ(readFile(m_folder / ("in/" + member.name)), member.data);
            member.data = "second";
        }
    }
}

}  // namespace
