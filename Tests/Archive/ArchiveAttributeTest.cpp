// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include <sys/xattr.h>
#include <unistd.h>

#include <filesystem>

#include "Tests/Archive/ArchiveFixture.h"

namespace {

namespace fs = std::filesystem;
using namespace zpk_test;

std::string getAttribute(const std::string& path, const std::string& name) {
    char value[70000];
    ssize_t size = getxattr(path.c_str(), name.c_str(), value, sizeof(value));
    return size < 0 ? "absent" : std::string(value, static_cast<std::size_t>(size));
}

class ArchiveAttributeTest : public ::testing::Test {
protected:
    void SetUp() override {
        writeFile(m_folder / "D/file", "contents");
        if (!set("D/file", "user.probe", "x")) {
            GTEST_SKIP() << "the file system has no user attributes";
        }
        removexattr((m_folder / "D/file").c_str(), "user.probe");
    }

    bool set(const std::string& path, const std::string& name, const std::string& value) {
        return setxattr((m_folder / path).c_str(), name.c_str(), value.data(), value.size(), 0) == 0;
    }

    TemporaryFolder m_folder;
};

TEST_F(ArchiveAttributeTest, ComeBackOnFilesAndFolders) {
    const std::string finderInfo = std::string("TEXTttxt") + std::string(24, '\1');
    fs::create_directories(m_folder / "D/sub");
    writeFile(m_folder / "D/sub/read only", "r");
    ASSERT_TRUE(set("D/file", "user.com.apple.FinderInfo", finderInfo));
    ASSERT_TRUE(set("D/file", "user.com.apple.ResourceFork", std::string("fork\0bytes", 10)));
    ASSERT_TRUE(set("D/file", "user.comment", "a remark"));
    ASSERT_TRUE(set("D/file", "user.empty", ""));
    ASSERT_TRUE(set("D/sub", "user.on.folder", "yes"));
    ASSERT_TRUE(set("D", "user.on.top", "top"));
    ASSERT_TRUE(set("D/sub/read only", "user.x", std::string(3000, 'v')));
    chmod((m_folder / "D/sub/read only").c_str(), 0444);
    setTime(m_folder / "D/file", 1100000000);
    ASSERT_EQ(create(m_folder / "D", m_folder / "d.dat").exitStatus, 0);
    chmod(m_folder.path().c_str(), 0777);
    Outcome extracted = extract(m_folder / "d.dat", m_folder / "out", becomeNobody);
    EXPECT_EQ(extracted.exitStatus, 0);
    EXPECT_EQ(extracted.standardError, "");
    EXPECT_EQ(snapshot(m_folder / "D"), snapshot(m_folder / "out/D"));
    std::string file = m_folder / "out/D/file";
    EXPECT_EQ(getAttribute(file, "user.com.apple.FinderInfo"), finderInfo);
    EXPECT_EQ(getAttribute(file, "user.com.apple.ResourceFork"), std::string("fork\0bytes", 10));
    EXPECT_EQ(getAttribute(file, "user.comment"), "a remark");
    EXPECT_EQ(getAttribute(file, "user.empty"), "");
    EXPECT_EQ(getAttribute(m_folder / "out/D/sub", "user.on.folder"), "yes");
    EXPECT_EQ(getAttribute(m_folder / "out/D", "user.on.top"), "top");
    EXPECT_EQ(getAttribute(m_folder / "out/D/sub/read only", "user.x"), std::string(3000, 'v'));
}

TEST_F(ArchiveAttributeTest, OddValuesOfThePlacedAttributesComeBack) {
    ASSERT_TRUE(set("D/file", "user.com.apple.FinderInfo", "short"));
    ASSERT_TRUE(set("D/file", "user.com.apple.ResourceFork", ""));
    writeFile(m_folder / "D/zero", "");
    ASSERT_TRUE(set("D/zero", "user.com.apple.FinderInfo", std::string(32, '\0')));
    ASSERT_EQ(create(m_folder / "D", m_folder / "d.dat").exitStatus, 0);
    ASSERT_EQ(extract(m_folder / "d.dat", m_folder / "out").exitStatus, 0);
    EXPECT_EQ(getAttribute(m_folder / "out/D/file", "user.com.apple.FinderInfo"), "short");
    EXPECT_EQ(getAttribute(m_folder / "out/D/file", "user.com.apple.ResourceFork"), "");
    EXPECT_EQ(getAttribute(m_folder / "out/D/zero", "user.com.apple.FinderInfo"), std::string(32, '\0'));
}

TEST_F(ArchiveAttributeTest, RealFileOfTheCompanionsNameSurvivesBesideAttributes) {
    writeFile(m_folder / "D/._file", "an ordinary file");
    ASSERT_TRUE(set("D/file", "user.a", "b"));
    ASSERT_EQ(create(m_folder / "D", m_folder / "d.dat").exitStatus, 0);
    ASSERT_EQ(extract(m_folder / "d.dat", m_folder / "out").exitStatus, 0);
    EXPECT_EQ(readFile(m_folder / "out/D/._file"), "an ordinary file");
    EXPECT_EQ(getAttribute(m_folder / "out/D/file", "user.a"), "b");
}

TEST_F(ArchiveAttributeTest, CompanionMayComeAnywhereAndStaysWithoutItsFile) {
    ASSERT_TRUE(set("D/file", "user.a", "b"));
    ASSERT_EQ(create(m_folder / "D", m_folder / "d.dat").exitStatus, 0);
    shell("cd '" + m_folder.path() +
          "'; gzip -dc < d.dat > plain; mkdir parts; cd parts; cpio -id --quiet < ../plain");
    std::string companion = readFile(m_folder / "parts/D/._file");
    RawMember file{"D/file", S_IFREG | 0400, "contents"};
    RawMember other{"D/other", S_IFREG | 0644, "other"};
    RawMember attributes{"D/._file", S_IFREG | 0, companion};
    struct Row {
        const char* name;
        std::vector<RawMember> members;
        bool joined;
    };
    for (const Row& row : std::vector<Row>{{"before", {attributes, other, file}, true},
                                           {"directly before", {attributes, file}, true},
                                           {"long after", {file, other, attributes}, true},
                                           {"alone", {attributes, other}, false}}) {
        SCOPED_TRACE(row.name);
        std::string out = m_folder / (std::string("out ") + row.name);
        writeFile(m_folder / "raw", makeOdc(row.members));
        Outcome outcome = extract(m_folder / "raw", out);
        EXPECT_EQ(outcome.exitStatus, 0) << outcome.standardError;
        EXPECT_EQ(fs::exists(out + "/D/._file"), !row.joined);
        EXPECT_EQ(getAttribute(out + "/D/file", "user.a"), row.joined ? "b" : "absent");
    }
}

TEST_F(ArchiveAttributeTest, WhatTheFileSystemRefusesIsKeptAsAFile) {
    TemporaryFolder mountPoint;
    if (geteuid() != 0 ||
        std::system(("mount -t ramfs none '" + mountPoint.path() + "' 2>/dev/null").c_str()) != 0) {
        GTEST_SKIP() << "cannot mount a file system without attributes";
    }
    ASSERT_TRUE(set("D/file", "user.a", "b"));
    EXPECT_EQ(create(m_folder / "D", m_folder / "d.dat").exitStatus, 0);
    Outcome outcome = extract(m_folder / "d.dat", mountPoint.path());
    EXPECT_EQ(outcome.exitStatus, 0);
    EXPECT_EQ(outcome.standardError,
              "ditto: D/file: warning: its extended attributes are kept in the file ._file (Operation not "
              "supported)\n");
    EXPECT_EQ(readFile(mountPoint / "D/file"), "contents");
    EXPECT_EQ(readFile(mountPoint / "D/._file").substr(0, 4), std::string("\0\5\x16\7", 4));
    shell("umount '" + mountPoint.path() + "'");
}

TEST_F(ArchiveAttributeTest, NameTooLongForACompanionIsAnError) {
    std::string name(254, 'n');
    writeFile(m_folder / ("D/" + name), "kept");
    ASSERT_TRUE(set("D/" + name, "user.a", "b"));
    EXPECT_EQ(create(m_folder / "D", m_folder / "d.dat").exitStatus, 1);
    ASSERT_EQ(extract(m_folder / "d.dat", m_folder / "out").exitStatus, 0);
    EXPECT_EQ(readFile(m_folder / ("out/D/" + name)), "kept");
}

}  // namespace
