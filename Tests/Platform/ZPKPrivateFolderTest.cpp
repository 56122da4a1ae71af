// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Platform/ZPKPrivateFolder.h"

#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "Tests/Platform/OtherUser.h"
#include "Tests/Support/TemporaryFolder.h"

namespace {

using zpk_test::answerWithoutPrivileges;
using zpk_test::giveToUserWithoutPrivileges;
using zpk_test::TemporaryFolder;
using zpk_test::writeFile;

mode_t modeOf(const std::string& path) {
    struct stat attributes;
    EXPECT_EQ(::lstat(path.c_str(), &attributes), 0) << path;
    return attributes.st_mode & 0777;
}

std::string reasonOf(const ZPKOutcome& outcome) {
    return outcome ? "" : outcome.failure().reason();
}

class ZPKPrivateFolderTest : public ::testing::Test {
protected:
    TemporaryFolder m_folder;
    std::string m_path = m_folder / "private";
};

using Operation = ZPKOutcome (*)(const std::string&);

constexpr Operation kOperations[] = {&ZPKPrivateFolder::makeNew, &ZPKPrivateFolder::makeOrFind};

TEST_F(ZPKPrivateFolderTest, HasItsModeWhateverTheUmask) {
    const mode_t before = ::umask(0);
    for (const Operation make : kOperations) {
        for (const mode_t mask : {0000u, 0022u, 0077u, 0277u, 0777u}) {
            ::umask(mask);
            EXPECT_EQ(reasonOf(make(m_path)), "") << mask;
            EXPECT_EQ(::umask(mask), mask) << "the umask is the whole process's";
            EXPECT_EQ(modeOf(m_path), 0700u) << mask;
            ASSERT_EQ(::rmdir(m_path.c_str()), 0);
        }
    }
    ::umask(before);
}

TEST_F(ZPKPrivateFolderTest, NewOneIsGivenAsItIsAndNotAsItsPlace) {
    const ZPKResult<ZPKFileDescriptor> folder = ZPKPrivateFolder::makeNewAndOpen(m_path);
    ASSERT_TRUE(folder);
    std::filesystem::rename(m_path, m_folder / "moved");
    std::filesystem::create_directory(m_path);
    EXPECT_EQ(::mkdirat(folder->get(), "inside", 0700), 0);
    EXPECT_TRUE(std::filesystem::exists(m_folder / "moved/inside"));
}

TEST_F(ZPKPrivateFolderTest, WithoutDescriptorsNothingNewStays) {
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
    const rlimit few{0, before.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &few), 0);
    const ZPKOutcome outcome = ZPKPrivateFolder::makeNew(m_path);
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &before), 0);
    EXPECT_EQ(reasonOf(outcome), ZPKFailure::systemReason(EMFILE));
    EXPECT_FALSE(std::filesystem::exists(m_path));
}

TEST_F(ZPKPrivateFolderTest, HasItsModeForOneWithoutRootsRightsToo) {
    giveToUserWithoutPrivileges(m_folder.path());
    for (const Operation make : kOperations) {
        EXPECT_TRUE(answerWithoutPrivileges([&] {
            ::umask(0777);
            return static_cast<bool>(make(m_path));
        }));
        EXPECT_EQ(modeOf(m_path), 0700u);
        ASSERT_EQ(::rmdir(m_path.c_str()), 0);
    }
}

TEST_F(ZPKPrivateFolderTest, TakesNoRightsFromTheFolderThatItIsMadeIn) {
    // Default permissions for new items: everything for the user "nobody".
    const unsigned char defaults[] = {2,    0,    0,    0,    0x01, 0,    7,    0,    0xFF, 0xFF, 0xFF,
                                      0xFF, 0x02, 0,    7,    0,    0xFE, 0xFF, 0,    0,    0x04, 0,
                                      7,    0,    0xFF, 0xFF, 0xFF, 0xFF, 0x10, 0,    7,    0,    0xFF,
                                      0xFF, 0xFF, 0xFF, 0x20, 0,    0,    0,    0xFF, 0xFF, 0xFF, 0xFF};
    if (::setxattr(m_folder.path().c_str(), "system.posix_acl_default", defaults, sizeof(defaults), 0) != 0) {
        GTEST_SKIP() << "the file system knows no such permissions";
    }
    EXPECT_EQ(reasonOf(ZPKPrivateFolder::makeNew(m_path)), "");
    EXPECT_EQ(modeOf(m_path), 0700u);
}

TEST_F(ZPKPrivateFolderTest, TrailingSeparatorsDoNotCount) {
    EXPECT_TRUE(ZPKPrivateFolder::makeNew(m_path + "//"));
    EXPECT_TRUE(ZPKPrivateFolder::makeOrFind(m_path + "/"));
    EXPECT_TRUE(ZPKPrivateFolder::checkNew(m_path + "/"));
}

TEST_F(ZPKPrivateFolderTest, NewOneIsMadeByThisCallAlone) {
    ASSERT_TRUE(ZPKPrivateFolder::makeNew(m_path));
    const ZPKOutcome again = ZPKPrivateFolder::makeNew(m_path);
    ASSERT_FALSE(again);
    EXPECT_EQ(again.failure().message(), m_path + ": File exists");
    EXPECT_TRUE(ZPKPrivateFolder::makeOrFind(m_path));
}

TEST_F(ZPKPrivateFolderTest, NothingIsMadeWhereItCannotBe) {
    for (const Operation make : kOperations) {
        EXPECT_EQ(reasonOf(make(m_folder / "missing/private")), "No such file or directory");
        EXPECT_EQ(reasonOf(make("")), "No such file or directory");
    }
    EXPECT_TRUE(std::filesystem::is_empty(m_folder.path()));
}

TEST_F(ZPKPrivateFolderTest, WhatStandsInItsPlaceIsRefusedAndLeftAlone) {
    std::filesystem::create_directory(m_folder / "own");
    ::chmod((m_folder / "own").c_str(), 0700);
    std::filesystem::create_directory_symlink("own", m_folder / "link");
    std::filesystem::create_symlink("nowhere", m_folder / "dangling");
    writeFile(m_folder / "file", "kept");
    ASSERT_EQ(::mkfifo((m_folder / "fifo").c_str(), 0700), 0);
    for (const char* const name : {"link", "link/", "dangling", "dangling/", "file", "fifo"}) {
        EXPECT_EQ(reasonOf(ZPKPrivateFolder::makeNew(m_folder / name)), "File exists") << name;
        EXPECT_EQ(reasonOf(ZPKPrivateFolder::makeOrFind(m_folder / name)), "Not a directory") << name;
        EXPECT_EQ(reasonOf(ZPKPrivateFolder::checkNew(m_folder / name)), "Not a directory") << name;
    }
    EXPECT_FALSE(std::filesystem::exists(m_folder / "nowhere"));
}

TEST_F(ZPKPrivateFolderTest, FolderOfAnotherModeIsRefusedAndNotRepaired) {
    std::filesystem::create_directory(m_path);
    for (const mode_t mode : {0755u, 0777u, 0710u, 0701u, 0500u, 0000u}) {
        ::chmod(m_path.c_str(), mode);
        EXPECT_EQ(reasonOf(ZPKPrivateFolder::makeOrFind(m_path)), "Not its owner's alone") << mode;
        EXPECT_EQ(reasonOf(ZPKPrivateFolder::checkNew(m_path)), "Not its owner's alone") << mode;
        EXPECT_EQ(modeOf(m_path), mode);
    }
}

TEST_F(ZPKPrivateFolderTest, FolderThatHoldsSomethingIsNotNew) {
    ASSERT_TRUE(ZPKPrivateFolder::makeNew(m_path));
    writeFile(m_path + "/.hidden", "x");
    EXPECT_EQ(reasonOf(ZPKPrivateFolder::checkNew(m_path)), "Is not empty");
    EXPECT_TRUE(ZPKPrivateFolder::makeOrFind(m_path));
}

TEST_F(ZPKPrivateFolderTest, AnotherUsersFolderIsRefused) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "needs another user's folder";
    }
    ASSERT_TRUE(ZPKPrivateFolder::makeNew(m_path));
    giveToUserWithoutPrivileges(m_path);
    EXPECT_EQ(reasonOf(ZPKPrivateFolder::makeOrFind(m_path)), "Belongs to another user");
    EXPECT_EQ(reasonOf(ZPKPrivateFolder::checkNew(m_path)), "Belongs to another user");
}

TEST_F(ZPKPrivateFolderTest, MountPointIsNotNew) {
    ASSERT_TRUE(ZPKPrivateFolder::makeNew(m_path));
    if (::mount("none", m_path.c_str(), "tmpfs", 0, "mode=0700") != 0) {
        GTEST_SKIP() << "may not mount";
    }
    EXPECT_EQ(reasonOf(ZPKPrivateFolder::makeNew(m_path)), "File exists");
    EXPECT_EQ(reasonOf(ZPKPrivateFolder::checkNew(m_path)), "Is a mount point");
    ::umount(m_path.c_str());
    EXPECT_TRUE(ZPKPrivateFolder::checkNew(m_path));
}

}  // namespace
