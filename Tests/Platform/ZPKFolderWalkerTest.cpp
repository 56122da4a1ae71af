// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Platform/ZPKFolderWalker.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <initializer_list>

#include "Tests/Support/TemporaryFolder.h"

namespace {

namespace fs = std::filesystem;
using zpk_test::TemporaryFolder;
using Access = ZPKFolderWalker::Access;

// What a swapped link meets, whoever swaps it and when: between a look and the next call nothing else is
// asked.
TEST(ZPKFolderWalkerTest, LinkIsNotEnteredWhoeverPutItThere) {
    const TemporaryFolder folder;
    fs::create_directories(folder / "outside");
    fs::create_directories(folder / "tree");
    fs::create_directory_symlink(folder / "outside", folder / "tree/sub");
    ::chmod((folder / "outside").c_str(), 0555);
    for (const Access access : {Access::Plain, Access::ForRemoval}) {
        ZPKFolderWalker walker(access);
        ASSERT_TRUE(walker.enterAt(AT_FDCWD, folder / "tree"));
        EXPECT_FALSE(walker.enter("sub"));
        EXPECT_TRUE(errno == ELOOP || errno == ENOTDIR) << errno;
        EXPECT_EQ(walker.name(), folder / "tree");
    }
    struct stat status {};
    ASSERT_EQ(::stat((folder / "outside").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0555U);
}

TEST(ZPKFolderWalkerTest, FolderThatHoldsItselfIsNotEnteredAgain) {
    const TemporaryFolder folder;
    fs::create_directories(folder / "tree/sub");
    ZPKFolderWalker walker(Access::Plain);
    ASSERT_TRUE(walker.enterAt(AT_FDCWD, folder / "tree"));
    ASSERT_TRUE(walker.enter("sub"));
    EXPECT_FALSE(walker.enterAt(AT_FDCWD, folder / "tree"));
    EXPECT_EQ(errno, ELOOP);
    EXPECT_EQ(walker.name(), "sub");
}

TEST(ZPKFolderWalkerTest, WayBackThatSomebodyMovedEndsTheWalk) {
    constexpr int kDeeperThanKeptOpen = 40;
    const TemporaryFolder folder;
    fs::create_directories(folder / "tree");
    ZPKFolderWalker walker(Access::Plain);
    ASSERT_TRUE(walker.enterAt(AT_FDCWD, folder / "tree"));
    std::string path = folder / "tree";
    for (int level = 0; level < kDeeperThanKeptOpen; ++level) {
        path += "/d";
        fs::create_directory(path);
        ASSERT_TRUE(walker.enter("d"));
    }
    fs::create_directory(folder / "elsewhere");
    fs::rename(path, folder / "elsewhere/d");
    EXPECT_FALSE(walker.leave());
    EXPECT_EQ(errno, ESTALE);
    EXPECT_FALSE(walker.isInside());
}

TEST(ZPKFolderWalkerTest, TwoDescriptorsAreEnoughForAnyDepth) {
    const TemporaryFolder folder;
    const std::string deepest = "a/b/c/d/e/f/g/h";
    fs::create_directories(folder / ("tree/" + deepest));
    const int next = ::open("/", O_PATH | O_CLOEXEC);
    ::close(next);
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
    const rlimit two{static_cast<rlim_t>(next) + 2, before.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &two), 0);
    std::string reached;
    int left = 0;
    {
        ZPKFolderWalker walker(Access::Plain);
        bool isIn = walker.enterAt(AT_FDCWD, folder / "tree");
        for (char name = 'a'; isIn && name <= 'h'; ++name) {
            isIn = walker.enter(std::string(1, name));
        }
        reached = walker.isInside() ? walker.pathBelowStart() : "";
        for (; walker.isInside() && walker.leave(); ++left) {
        }
    }
    ::setrlimit(RLIMIT_NOFILE, &before);
    EXPECT_EQ(reached, deepest);
    EXPECT_EQ(left, 9);
}

}  // namespace
