// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Base/ZPKReplacementFile.h"

#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <vector>

#include "Base/ZPKDescriptorIO.h"
#include "Tests/Support/TemporaryFolder.h"

namespace {

using zpk_test::readFile;
using zpk_test::TemporaryFolder;
using zpk_test::writeFile;

mode_t modeOf(const std::string& path) {
    struct stat attributes;
    EXPECT_EQ(::stat(path.c_str(), &attributes), 0) << path;
    return attributes.st_mode & 07777;
}

std::vector<std::string> namesIn(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        names.push_back(entry.path().filename());
    }
    std::sort(names.begin(), names.end());
    return names;
}

using Names = std::vector<std::string>;

class ZPKReplacementFileTest : public ::testing::Test {
protected:
    TemporaryFolder m_folder;
    std::string m_path = m_folder / "file";
};

TEST_F(ZPKReplacementFileTest, AppearsWhenItIsComplete) {
    writeFile(m_path, "old");
    {
        auto file = ZPKReplacementFile::forPath(m_path);
        ASSERT_TRUE(file);
        EXPECT_EQ(namesIn(m_folder.path()).size(), 2u);
        ASSERT_TRUE(ZPKDescriptorIO::writeWhole(file->descriptor(), "new and longer"));
        EXPECT_EQ(readFile(m_path), "old");
        EXPECT_TRUE(file->commit());
        EXPECT_EQ(readFile(m_path), "new and longer");
    }
    EXPECT_EQ(namesIn(m_folder.path()), Names{"file"});
}

TEST_F(ZPKReplacementFileTest, NothingIsLeftWithoutCommit) {
    writeFile(m_path, "old");
    {
        auto file = ZPKReplacementFile::forPath(m_path);
        ASSERT_TRUE(file);
        ASSERT_TRUE(ZPKDescriptorIO::writeWhole(file->descriptor(), "new"));
        const ZPKReplacementFile moved = std::move(*file);
        EXPECT_EQ(namesIn(m_folder.path()).size(), 2u);
    }
    EXPECT_EQ(namesIn(m_folder.path()), Names{"file"});
    EXPECT_EQ(readFile(m_path), "old");
}

TEST_F(ZPKReplacementFileTest, LongestNameCanBeReplaced) {
    const std::string path = m_folder / std::string(255, 'n');
    auto file = ZPKReplacementFile::forPath(path);
    ASSERT_TRUE(file) << file.failure().message();
    ASSERT_TRUE(ZPKDescriptorIO::writeWhole(file->descriptor(), "x"));
    EXPECT_TRUE(file->commit());
    EXPECT_EQ(readFile(path), "x");
}

TEST_F(ZPKReplacementFileTest, TemporaryNamesStandBesideTheTarget) {
    const std::string path = ZPKReplacementFile::temporaryPathBeside("/a/b/name", 3);
    EXPECT_EQ(path.substr(0, 6), "/a/b/.");
    EXPECT_EQ(path.find("name"), std::string::npos);
    EXPECT_NE(path, ZPKReplacementFile::temporaryPathBeside("/a/b/name", 4));
    EXPECT_EQ(ZPKReplacementFile::temporaryPathBeside("name", 0).front(), '.');
    EXPECT_EQ(ZPKReplacementFile::temporaryPathBeside("name", 0).find('/'), std::string::npos);
}

TEST_F(ZPKReplacementFileTest, SeveralGrowBesideEachOther) {
    writeFile(ZPKReplacementFile::temporaryPathBeside(m_path, 0), "somebody else's");
    auto first = ZPKReplacementFile::forPath(m_path);
    auto second = ZPKReplacementFile::forPath(m_path);
    ASSERT_TRUE(first && second);
    ASSERT_TRUE(ZPKDescriptorIO::writeWhole(first->descriptor(), "first"));
    ASSERT_TRUE(ZPKDescriptorIO::writeWhole(second->descriptor(), "second"));
    EXPECT_TRUE(second->commit());
    EXPECT_TRUE(first->commit());
    EXPECT_EQ(readFile(m_path), "first");
    EXPECT_EQ(readFile(ZPKReplacementFile::temporaryPathBeside(m_path, 0)), "somebody else's");
}

TEST_F(ZPKReplacementFileTest, CompleteOneTouchesNobodyElsesFile) {
    const std::string next = ZPKReplacementFile::temporaryPathBeside(m_path, 0);
    {
        auto file = ZPKReplacementFile::forPath(m_path);
        ASSERT_TRUE(file && file->commit());
        writeFile(next, "another's, under way");
    }
    EXPECT_EQ(readFile(next), "another's, under way");
}

TEST_F(ZPKReplacementFileTest, NewFileHasTheModeLessTheUmask) {
    const mode_t before = ::umask(027);
    for (const mode_t mode : {0666u, 0777u, 0600u}) {
        auto file = ZPKReplacementFile::forPath(m_path, mode);
        ASSERT_TRUE(file);
        EXPECT_TRUE(file->commit());
        EXPECT_EQ(modeOf(m_path), mode & ~027u);
    }
    ::umask(before);
}

TEST_F(ZPKReplacementFileTest, PermissionsAreTakenOverWhenAsked) {
    writeFile(m_path, "old");
    ::chmod(m_path.c_str(), 04751);
    auto file = ZPKReplacementFile::forPath(m_path, 0600);
    ASSERT_TRUE(file);
    EXPECT_TRUE(file->takeOverPermissions());
    EXPECT_TRUE(file->commit());
    EXPECT_EQ(modeOf(m_path), 0751u) << "without the set-ID bit";
    auto missing = ZPKReplacementFile::forPath(m_folder / "new", 0600);
    ASSERT_TRUE(missing);
    EXPECT_TRUE(missing->takeOverPermissions()) << "there is nothing to take over";
    EXPECT_TRUE(missing->commit());
    EXPECT_EQ(modeOf(m_folder / "new"), 0600u);
}

TEST_F(ZPKReplacementFileTest, LinkIsReplacedAndNotFollowed) {
    writeFile(m_folder / "target", "kept");
    std::filesystem::create_symlink("target", m_path);
    auto file = ZPKReplacementFile::forPath(m_path);
    ASSERT_TRUE(file && file->commit());
    EXPECT_TRUE(std::filesystem::is_regular_file(std::filesystem::symlink_status(m_path)));
    EXPECT_EQ(readFile(m_folder / "target"), "kept");
}

TEST_F(ZPKReplacementFileTest, FolderInThePlaceIsAFailureThatLeavesNothing) {
    std::filesystem::create_directory(m_path);
    {
        auto file = ZPKReplacementFile::forPath(m_path);
        ASSERT_TRUE(file);
        const ZPKOutcome outcome = file->commit();
        ASSERT_FALSE(outcome);
        EXPECT_EQ(outcome.failure().message(), m_path + ": Is a directory");
    }
    EXPECT_EQ(namesIn(m_folder.path()), Names{"file"});
}

TEST_F(ZPKReplacementFileTest, MissingFolderIsAFailure) {
    const auto file = ZPKReplacementFile::forPath(m_folder / "missing/file");
    ASSERT_FALSE(file);
    EXPECT_EQ(file.failure().message(), m_folder / "missing/file: No such file or directory");
}

TEST_F(ZPKReplacementFileTest, FullDiskLeavesTheOldFile) {
    if (::mount("none", m_folder.path().c_str(), "tmpfs", 0, "size=65536") != 0) {
        GTEST_SKIP() << "may not mount";
    }
    writeFile(m_path, "old");
    {
        auto file = ZPKReplacementFile::forPath(m_path);
        ASSERT_TRUE(file);
        EXPECT_FALSE(ZPKDescriptorIO::writeWhole(file->descriptor(), std::string(100'000, 'x')));
    }
    EXPECT_EQ(namesIn(m_folder.path()), Names{"file"});
    EXPECT_EQ(readFile(m_path), "old");
    ::umount(m_folder.path().c_str());
}

}  // namespace
