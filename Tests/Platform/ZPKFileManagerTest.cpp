// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Platform/ZPKFileManager.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <thread>

#include "Tests/Platform/OtherUser.h"
#include "Tests/Support/TemporaryFolder.h"

namespace {

using zpk_test::answerWithoutPrivileges;
using zpk_test::giveToUserWithoutPrivileges;
using zpk_test::readFile;
using zpk_test::TemporaryFolder;
using zpk_test::writeFile;

bool isThere(const std::string& path) {
    struct stat attributes;
    return ::lstat(path.c_str(), &attributes) == 0;
}

mode_t modeOf(const std::string& path) {
    struct stat attributes;
    EXPECT_EQ(::lstat(path.c_str(), &attributes), 0) << path;
    return attributes.st_mode & 07777;
}

/// A chain of folders far longer than any path may be.
void makeDeepTree(const std::string& root, int levels) {
    ASSERT_EQ(::mkdir(root.c_str(), 0777), 0);
    int folder = ::open(root.c_str(), O_RDONLY | O_DIRECTORY);
    for (int level = 0; level < levels; ++level) {
        ASSERT_EQ(::mkdirat(folder, "d", 0777), 0);
        const int below = ::openat(folder, "d", O_RDONLY | O_DIRECTORY);
        ASSERT_GE(below, 0);
        ::close(folder);
        folder = below;
    }
    const int file = ::openat(folder, "bottom", O_WRONLY | O_CREAT, 0666);
    ASSERT_GE(file, 0);
    ::close(file);
    ::close(folder);
}

int depthOf(const std::string& root) {
    int folder = ::open(root.c_str(), O_RDONLY | O_DIRECTORY);
    int depth = 0;
    for (int below; (below = ::openat(folder, "d", O_RDONLY | O_DIRECTORY)) >= 0; ++depth) {
        ::close(folder);
        folder = below;
    }
    ::close(folder);
    return depth;
}

std::size_t openDescriptorCount() {
    std::vector<std::string> names;
    ZPKFileManager::contentsOfFolder("/proc/self/fd", names).ignore();
    return names.size();
}

TEST(ZPKFileManagerTest, QueriesTellItemsApart) {
    const TemporaryFolder folder;
    writeFile(folder / "file", "12345");
    writeFile(folder / "program", "#!/bin/sh\n");
    ::chmod((folder / "program").c_str(), 0755);
    ::chmod((folder / "file").c_str(), 0644);
    std::filesystem::create_symlink("nowhere", folder / "dangling");
    std::filesystem::create_symlink("file", folder / "fileLink");
    std::filesystem::create_symlink(folder.path(), folder / "folderLink");
    struct Row {
        std::string path;
        bool exists, isFolder, isFolderItself, isExecutable, isProgram;
    };
    const std::vector<Row> rows = {
        {folder / "file", true, false, false, false, false},
        {folder / "fileLink", true, false, false, false, false},
        {folder / "program", true, false, false, true, true},
        {folder / "dangling", false, false, false, false, false},
        {folder / "missing", false, false, false, false, false},
        {"", false, false, false, false, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.path);
        EXPECT_EQ(ZPKFileManager::fileExists(row.path), row.exists);
        EXPECT_EQ(ZPKFileManager::isFolder(row.path), row.isFolder);
        EXPECT_EQ(ZPKFileManager::isFolderNotFollowingLinks(row.path), row.isFolderItself);
        EXPECT_EQ(ZPKFileManager::isExecutableFile(row.path), row.isExecutable);
        EXPECT_EQ(ZPKFileManager::isExecutableRegularFile(row.path), row.isProgram);
    }
    EXPECT_TRUE(ZPKFileManager::isFolder(folder / "folderLink"));
    EXPECT_FALSE(ZPKFileManager::isFolderNotFollowingLinks(folder / "folderLink"));
    EXPECT_TRUE(ZPKFileManager::isFolderNotFollowingLinks(folder.path()));
    EXPECT_TRUE(ZPKFileManager::isExecutableFile(folder.path()));
    EXPECT_FALSE(ZPKFileManager::isExecutableRegularFile(folder.path()));
}

TEST(ZPKFileManagerTest, CreatesIntermediateFoldersUnderTheUmask) {
    const TemporaryFolder folder;
    const mode_t before = ::umask(027);
    EXPECT_TRUE(ZPKFileManager::createFolderWithIntermediateFolders(folder / "a//b/c/", 0777));
    ::umask(before);
    EXPECT_EQ(modeOf(folder / "a"), 0750u);
    EXPECT_EQ(modeOf(folder / "a/b"), 0750u);
    EXPECT_EQ(modeOf(folder / "a/b/c"), 0750u);
}

TEST(ZPKFileManagerTest, CreateFolderAcceptsAnExistingFolderAndRefusesAFile) {
    const TemporaryFolder folder;
    writeFile(folder / "file", "kept");
    std::filesystem::create_symlink("nowhere", folder / "dangling");
    EXPECT_TRUE(ZPKFileManager::createFolderWithIntermediateFolders(folder.path(), 0777));
    EXPECT_TRUE(ZPKFileManager::createFolderWithIntermediateFolders("/", 0777));
    EXPECT_FALSE(ZPKFileManager::createFolderWithIntermediateFolders(folder / "file", 0777));
    EXPECT_FALSE(ZPKFileManager::createFolderWithIntermediateFolders(folder / "file/below", 0777));
    EXPECT_FALSE(ZPKFileManager::createFolderWithIntermediateFolders(folder / "dangling", 0777));
    EXPECT_FALSE(ZPKFileManager::createFolderWithIntermediateFolders("", 0777));
    EXPECT_EQ(readFile(folder / "file"), "kept");
}

TEST(ZPKFileManagerTest, CreateFolderFailsWhereTheUserMayNotWrite) {
    const TemporaryFolder folder;
    ::chmod(folder.path().c_str(), 0755);
    EXPECT_EQ(::geteuid() != 0, answerWithoutPrivileges([&] {
                  return static_cast<bool>(
                      ZPKFileManager::createFolderWithIntermediateFolders(folder / "a/b", 0777));
              }));
}

TEST(ZPKFileManagerTest, RemoveItemTakesFoldersWithEverythingInThem) {
    const TemporaryFolder folder;
    for (int index = 0; index < 300; ++index) {
        writeFile(folder / ("tree/sub" + std::to_string(index % 7) + "/file" + std::to_string(index)), "x");
    }
    ASSERT_EQ(::mkfifo((folder / "tree/fifo").c_str(), 0666), 0);
    EXPECT_TRUE(ZPKFileManager::removeItem(folder / "tree/"));
    EXPECT_FALSE(isThere(folder / "tree"));
    EXPECT_FALSE(ZPKFileManager::removeItem(folder / "tree"));
}

TEST(ZPKFileManagerTest, RemoveItemNeverFollowsLinks) {
    const TemporaryFolder folder;
    writeFile(folder / "outside/kept", "kept");
    writeFile(folder / "tree/file", "x");
    std::filesystem::create_directory_symlink(folder / "outside", folder / "tree/link");
    std::filesystem::create_directory_symlink(folder / "outside", folder / "top");
    EXPECT_TRUE(ZPKFileManager::removeItem(folder / "tree"));
    EXPECT_TRUE(ZPKFileManager::removeItem(folder / "top/"));
    EXPECT_FALSE(isThere(folder / "top"));
    EXPECT_EQ(readFile(folder / "outside/kept"), "kept");
}

TEST(ZPKFileManagerTest, RemoveItemRefusesPathsThatNameNoItem) {
    const TemporaryFolder folder;
    writeFile(folder / "tree/sub/file", "x");
    for (const std::string& path :
         {std::string(), std::string("/"), folder / "tree/.", folder / "tree/sub/..", folder / "tree/./",
          folder / "missing/file", folder / "tree/sub/file/x", folder / std::string(5000, 'n')}) {
        EXPECT_FALSE(ZPKFileManager::removeItem(path)) << path;
    }
    EXPECT_EQ(readFile(folder / "tree/sub/file"), "x");
}

TEST(ZPKFileManagerTest, RemoveItemOpensTheUsersOwnClosedFolders) {
    const TemporaryFolder folder;
    ::chmod(folder.path().c_str(), 0755);
    for (const mode_t mode : {0000u, 0100u, 0300u, 0400u, 0500u, 0600u}) {
        const std::string tree = folder / ("space" + std::to_string(mode));
        writeFile(tree + "/tree/sub/file", "x");
        for (const std::string& path : {tree, tree + "/tree", tree + "/tree/sub", tree + "/tree/sub/file"}) {
            giveToUserWithoutPrivileges(path);
        }
        ::chmod((tree + "/tree/sub").c_str(), mode);
        ::chmod((tree + "/tree").c_str(), mode);
        EXPECT_TRUE(answerWithoutPrivileges([&] {
            return static_cast<bool>(ZPKFileManager::removeItem(tree + "/tree"));
        })) << mode;
        EXPECT_FALSE(isThere(tree + "/tree")) << mode;
    }
}

TEST(ZPKFileManagerTest, RemoveItemSaysWhenSomethingRemains) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "needs another user's folder";
    }
    const TemporaryFolder folder;
    ::chmod(folder.path().c_str(), 0755);
    writeFile(folder / "space/tree/foreign/file", "kept");
    writeFile(folder / "space/tree/own/file", "x");
    for (const char* const path : {"space", "space/tree", "space/tree/own", "space/tree/own/file"}) {
        giveToUserWithoutPrivileges(folder / path);
    }
    EXPECT_FALSE(answerWithoutPrivileges(
        [&] { return static_cast<bool>(ZPKFileManager::removeItem(folder / "space/tree")); }));
    EXPECT_EQ(readFile(folder / "space/tree/foreign/file"), "kept");
    EXPECT_FALSE(isThere(folder / "space/tree/own"));
}

TEST(ZPKFileManagerTest, RemoveItemTakesTreesDeeperThanAnyPath) {
    const TemporaryFolder folder;
    const rlimit fewDescriptors{128, 128};
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &fewDescriptors), 0);
    const rlimit smallStack{256 * 1024, 256 * 1024};
    makeDeepTree(folder / "deep", 10'000);
    ASSERT_EQ(::setrlimit(RLIMIT_STACK, &smallStack), 0);
    bool removed = false;
    std::thread([&] { removed = static_cast<bool>(ZPKFileManager::removeItem(folder / "deep")); }).join();
    EXPECT_TRUE(removed);
    EXPECT_FALSE(isThere(folder / "deep"));
}

TEST(ZPKFileManagerTest, RemoveItemLeavesWhatIsMounted) {
    const TemporaryFolder folder;
    writeFile(folder / "tree/file", "x");
    std::filesystem::create_directories(folder / "tree/mounted");
    std::filesystem::create_directories(folder / "tree/bound");
    writeFile(folder / "original/kept", "kept");
    if (::mount("none", (folder / "tree/mounted").c_str(), "tmpfs", 0, nullptr) != 0) {
        GTEST_SKIP() << "may not mount";
    }
    ASSERT_EQ(
        ::mount((folder / "original").c_str(), (folder / "tree/bound").c_str(), nullptr, MS_BIND, nullptr),
        0);
    writeFile(folder / "tree/mounted/kept", "kept");
    EXPECT_FALSE(ZPKFileManager::removeItem(folder / "tree"));
    EXPECT_EQ(readFile(folder / "tree/mounted/kept"), "kept");
    EXPECT_EQ(readFile(folder / "original/kept"), "kept");
    EXPECT_FALSE(isThere(folder / "tree/file"));
    ::umount((folder / "tree/mounted").c_str());
    ::umount((folder / "tree/bound").c_str());
}

TEST(ZPKFileManagerTest, RemoveItemIsNotLedAwayByASwappedLink) {
    const TemporaryFolder folder;
    for (int index = 0; index < 50; ++index) {
        writeFile(folder / ("outside/kept" + std::to_string(index)), "kept");
    }
    std::filesystem::create_directory_symlink(folder / "outside", folder / "link");
    std::atomic<bool> done = false;
    std::thread swapper([&] {
        while (!done) {
            ::renameat2(AT_FDCWD, (folder / "link").c_str(), AT_FDCWD, (folder / "tree/sub").c_str(),
                        RENAME_EXCHANGE);
        }
    });
    for (int round = 0; round < 300; ++round) {
        std::filesystem::create_directories(folder / "tree/sub");
        writeFile(folder / "tree/sub/file", "x");
        ZPKFileManager::removeItem(folder / "tree").ignore();
    }
    done = true;
    swapper.join();
    for (int index = 0; index < 50; ++index) {
        EXPECT_TRUE(isThere(folder / ("outside/kept" + std::to_string(index)))) << index;
    }
}

TEST(ZPKFileManagerTest, CopyItemKeepsContentsModesTimesAndLinks) {
    const TemporaryFolder folder;
    const std::string large(3'000'000, 'L');
    writeFile(folder / "tree/sub/large", large);
    writeFile(folder / "tree/empty", "");
    writeFile(folder / "tree/readonly/file", "r");
    std::filesystem::create_symlink("sub/large", folder / "tree/link");
    std::filesystem::create_symlink("/nowhere/at all", folder / "tree/dangling");
    ::chmod((folder / "tree/sub/large").c_str(), 0640);
    ::chmod((folder / "tree/empty").c_str(), 06755);
    ::chmod((folder / "tree/readonly").c_str(), 0555);
    const timespec times[2] = {{1'000'000'000, 123}, {1'100'000'000, 456'789}};
    for (const char* const path : {"tree/sub/large", "tree/link", "tree/sub", "tree"}) {
        ASSERT_EQ(::utimensat(AT_FDCWD, (folder / path).c_str(), times, AT_SYMLINK_NOFOLLOW), 0);
    }
    EXPECT_TRUE(ZPKFileManager::copyItem(folder / "tree", folder / "copy"));
    EXPECT_EQ(readFile(folder / "copy/sub/large"), large);
    EXPECT_EQ(readFile(folder / "copy/readonly/file"), "r");
    EXPECT_EQ(std::filesystem::read_symlink(folder / "copy/link"), "sub/large");
    EXPECT_EQ(std::filesystem::read_symlink(folder / "copy/dangling"), "/nowhere/at all");
    EXPECT_EQ(modeOf(folder / "copy/sub/large"), 0640u);
    EXPECT_EQ(modeOf(folder / "copy/empty"), 0755u) << "set-ID bits do not travel";
    EXPECT_EQ(modeOf(folder / "copy/readonly"), 0555u);
    for (const char* const path : {"copy/sub/large", "copy/link", "copy/sub", "copy"}) {
        struct stat attributes;
        ASSERT_EQ(::lstat((folder / path).c_str(), &attributes), 0);
        EXPECT_EQ(attributes.st_mtim.tv_sec, 1'100'000'000) << path;
        EXPECT_EQ(attributes.st_mtim.tv_nsec, 456'789) << path;
    }
}

TEST(ZPKFileManagerTest, CopyItemNeverOverwrites) {
    const TemporaryFolder folder;
    writeFile(folder / "source", "new");
    writeFile(folder / "file", "old");
    writeFile(folder / "tree/x", "new");
    std::filesystem::create_directory(folder / "folder");
    std::filesystem::create_symlink("elsewhere", folder / "dangling");
    for (const char* const source : {"source", "tree"}) {
        for (const char* const destination : {"file", "folder", "dangling"}) {
            EXPECT_FALSE(ZPKFileManager::copyItem(folder / source, folder / destination))
                << source << " to " << destination;
        }
    }
    EXPECT_EQ(readFile(folder / "file"), "old");
    EXPECT_TRUE(std::filesystem::is_empty(folder / "folder"));
    EXPECT_FALSE(isThere(folder / "elsewhere"));
}

TEST(ZPKFileManagerTest, CopyItemRefusesWhatWouldHangOrNeverEnd) {
    const TemporaryFolder folder;
    ASSERT_EQ(::mkfifo((folder / "fifo").c_str(), 0666), 0);
    writeFile(folder / "tree/file", "x");
    writeFile(folder / "tree/a/b/file", "x");
    ASSERT_EQ(::mkfifo((folder / "tree/fifo").c_str(), 0666), 0);
    const int listener = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    (folder / "socket").copy(address.sun_path, sizeof(address.sun_path) - 1);
    ASSERT_EQ(::bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0);
    ::close(listener);
    EXPECT_FALSE(ZPKFileManager::copyItem(folder / "fifo", folder / "copy1"));
    EXPECT_FALSE(ZPKFileManager::copyItem(folder / "socket", folder / "copy2"));
    EXPECT_FALSE(ZPKFileManager::copyItem("/dev/zero", folder / "copy3"));
    EXPECT_FALSE(ZPKFileManager::copyItem(folder / "tree", folder / "tree/a/b/inside"));
    EXPECT_FALSE(ZPKFileManager::copyItem(folder / "tree", folder / "tree/inside"));
    EXPECT_FALSE(ZPKFileManager::copyItem(folder / "missing", folder / "copy4"));
    EXPECT_FALSE(ZPKFileManager::copyItem(folder / "tree/file", folder / "missing/copy"));
    EXPECT_FALSE(isThere(folder / "copy1") || isThere(folder / "copy2") || isThere(folder / "copy3") ||
                 isThere(folder / "copy4") || isThere(folder / "tree/inside"));
    EXPECT_FALSE(ZPKFileManager::copyItem(folder / "tree", folder / "copy5"));
    EXPECT_EQ(readFile(folder / "copy5/a/b/file"), "x") << "what can be copied is";
}

TEST(ZPKFileManagerTest, CopyItemSaysWhenAFileCannotBeRead) {
    const TemporaryFolder folder;
    ::chmod(folder.path().c_str(), 0777);
    writeFile(folder / "tree/closed", "x");
    writeFile(folder / "tree/open", "x");
    ::chmod((folder / "tree").c_str(), 0755);
    ::chmod((folder / "tree/open").c_str(), 0644);
    ::chmod((folder / "tree/closed").c_str(), 0000);
    EXPECT_FALSE(answerWithoutPrivileges(
        [&] { return static_cast<bool>(ZPKFileManager::copyItem(folder / "tree", folder / "copy")); }));
    EXPECT_EQ(readFile(folder / "copy/open"), "x");
}

TEST(ZPKFileManagerTest, CopyItemTakesTreesDeeperThanAnyPath) {
    const TemporaryFolder folder;
    makeDeepTree(folder / "deep", 3'000);
    const std::size_t before = openDescriptorCount();
    const rlimit fewDescriptors{128, 128};
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &fewDescriptors), 0);
    EXPECT_TRUE(ZPKFileManager::copyItem(folder / "deep", folder / "copy"));
    EXPECT_EQ(depthOf(folder / "copy"), 3'000);
    EXPECT_EQ(openDescriptorCount(), before);
    ZPKFileManager::removeItem(folder / "copy").ignore();
    ZPKFileManager::removeItem(folder / "deep").ignore();
}

TEST(ZPKFileManagerTest, ContentsOfFolderGivesDirectEntriesInTheirOrder) {
    const TemporaryFolder folder;
    for (const char* const name : {"b", "a", ".hidden", "c/below"}) {
        writeFile(folder / name, "x");
    }
    std::filesystem::create_directory_symlink(folder.path(), folder / "link");
    std::vector<std::string> expected;
    for (const auto& entry : std::filesystem::directory_iterator(folder.path())) {
        expected.push_back(entry.path().filename());
    }
    std::vector<std::string> names{"old"};
    EXPECT_TRUE(ZPKFileManager::contentsOfFolder(folder.path(), names));
    EXPECT_EQ(names, expected);
    EXPECT_TRUE(ZPKFileManager::contentsOfFolder(folder / "link", names));
    EXPECT_EQ(names, expected);
}

TEST(ZPKFileManagerTest, ContentsOfFolderIsEmptyWhenItCannotBeRead) {
    const TemporaryFolder folder;
    writeFile(folder / "file", "x");
    for (const std::string& path : {folder / "file", folder / "missing", std::string()}) {
        std::vector<std::string> names{"old"};
        EXPECT_FALSE(ZPKFileManager::contentsOfFolder(path, names)) << path;
        EXPECT_TRUE(names.empty());
    }
}

TEST(ZPKFileManagerTest, SubpathsGiveEachFolderBeforeWhatItHolds) {
    const TemporaryFolder folder;
    for (const char* const name : {"a/1", "a/b/2", "a/b/c/3", "z/4", "top", "\xFF\n name"}) {
        writeFile(folder / name, "x");
    }
    std::filesystem::create_directory_symlink(folder / "a", folder / "z/link");
    std::vector<std::string> expected;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder.path())) {
        expected.push_back(entry.path().lexically_relative(folder.path()));
    }
    std::vector<std::string> paths{"old"};
    ZPKFileManager::subpathsOfFolder(folder.path() + "/", paths).ignore();
    EXPECT_EQ(paths, expected);
    EXPECT_EQ(std::count(paths.begin(), paths.end(), "z/link/1"), 0);
}

TEST(ZPKFileManagerTest, VisitingGivesTheSameItemsAndEachFolderBeforeWhatItHolds) {
    const TemporaryFolder folder;
    for (const char* const path : {"a/b/c", "z"}) {
        std::filesystem::create_directories(folder / path);
    }
    for (const char* const path : {"a/b/c/1", "a/b/2", "a/3", "z/4", "5"}) {
        writeFile(folder / path, "");
    }
    std::filesystem::create_symlink("..", folder / "a/link");
    std::vector<std::string> visited;
    const auto visit = [&](const std::string& path, ZPKFileManager::ItemKind kind) {
        EXPECT_EQ(kind == ZPKFileManager::ItemKind::Link, path == "a/link");
        const std::string parent = path.substr(0, std::max<std::size_t>(path.rfind('/') + 1, 1) - 1);
        EXPECT_TRUE(parent.empty() || std::count(visited.begin(), visited.end(), parent) == 1) << path;
        visited.push_back(path);
    };
    EXPECT_TRUE(ZPKFileManager::visitFolder(folder.path(), visit));
    std::vector<std::string> paths;
    EXPECT_TRUE(ZPKFileManager::subpathsOfFolder(folder.path(), paths));
    std::sort(paths.begin(), paths.end());
    std::sort(visited.begin(), visited.end());
    EXPECT_EQ(visited, paths);
    EXPECT_FALSE(ZPKFileManager::visitFolder(folder / "missing", visit));
}

TEST(ZPKFileManagerTest, SubpathsLeaveOutWhatIsTooLongOrUnreadable) {
    const TemporaryFolder folder;
    makeDeepTree(folder / "deep", 6'000);
    std::vector<std::string> paths;
    ZPKFileManager::subpathsOfFolder(folder.path(), paths).ignore();
    ASSERT_FALSE(paths.empty());
    EXPECT_LT(paths.back().size(), 4096u);
    EXPECT_GT(paths.back().size(), 4090u);
    ZPKFileManager::removeItem(folder / "deep").ignore();
    ZPKFileManager::subpathsOfFolder(folder / "missing", paths).ignore();
    EXPECT_TRUE(paths.empty());
}

TEST(ZPKFileManagerTest, SubpathsEndWhereAFolderHoldsItself) {
    const TemporaryFolder folder;
    std::filesystem::create_directories(folder / "a/loop");
    if (::mount(folder.path().c_str(), (folder / "a/loop").c_str(), nullptr, MS_BIND, nullptr) != 0) {
        GTEST_SKIP() << "may not mount";
    }
    std::vector<std::string> paths;
    ZPKFileManager::subpathsOfFolder(folder.path(), paths).ignore();
    EXPECT_EQ(paths, (std::vector<std::string>{"a", "a/loop"}));
    ::umount((folder / "a/loop").c_str());
}

/// "" after a success.
std::string messageOf(const ZPKOutcome& outcome) {
    return outcome ? "" : outcome.failure().message();
}

TEST(ZPKFileManagerTest, PrefixIsNoPartOfWhatAFailureNames) {
    const TemporaryFolder folder;
    makeDeepTree(folder / "deep", 6'000);
    std::vector<std::string> plain;
    const std::string failure = messageOf(ZPKFileManager::subpathsOfFolder(folder.path(), plain));
    const std::string prefix(100, 'p');
    std::vector<std::string> prefixed;
    const auto visit = [&](const std::string& path, ZPKFileManager::ItemKind) { prefixed.push_back(path); };
    EXPECT_EQ(messageOf(ZPKFileManager::enumerateFolder(folder.path(), visit, prefix)), failure);
    EXPECT_NE(failure, "");
    for (std::string& path : plain) {
        path.insert(0, prefix);
    }
    EXPECT_EQ(prefixed, plain);
    ZPKFileManager::removeItem(folder / "deep").ignore();
}

TEST(ZPKFileManagerTest, CreateFolderSaysWhatStandsInTheWay) {
    const TemporaryFolder folder;
    writeFile(folder / "file", "x");
    const auto make = [](const std::string& path) {
        return messageOf(ZPKFileManager::createFolderWithIntermediateFolders(path, 0777));
    };
    EXPECT_EQ(make(folder / "file"), folder / "file: Not a directory");
    EXPECT_EQ(make(folder / "file/a/b"), folder / "file/a: Not a directory") << "the first that failed";
    EXPECT_EQ(make(""), ": No such file or directory");
    const std::string longName(300, 'n');
    EXPECT_EQ(make(folder / longName), folder / (longName + ": File name too long"));
}

TEST(ZPKFileManagerTest, RemoveItemSaysWhatRemains) {
    const TemporaryFolder folder;
    EXPECT_EQ(messageOf(ZPKFileManager::removeItem(folder / "missing")),
              folder / "missing: No such file or directory");
    EXPECT_EQ(messageOf(ZPKFileManager::removeItem(folder / "missing/x")),
              folder / "missing/x: No such file or directory");
    EXPECT_EQ(messageOf(ZPKFileManager::removeItem("/")), "/: Names no item of a folder");
    std::filesystem::create_directories(folder / "tree/sub/mounted");
    if (::mount("none", (folder / "tree/sub/mounted").c_str(), "tmpfs", 0, nullptr) != 0) {
        GTEST_SKIP() << "may not mount";
    }
    EXPECT_EQ(messageOf(ZPKFileManager::removeItem(folder / "tree/")),
              folder / "tree/sub/mounted: Device or resource busy");
    ::umount((folder / "tree/sub/mounted").c_str());
}

TEST(ZPKFileManagerTest, RemoveItemSaysWhyAFolderCouldNotBeLookedInto) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "needs another user's folder";
    }
    const TemporaryFolder folder;
    writeFile(folder / "shut/file", "kept");
    ::chmod((folder / "shut").c_str(), 0700);
    giveToUserWithoutPrivileges(folder.path());
    EXPECT_TRUE(answerWithoutPrivileges([&] {
        return messageOf(ZPKFileManager::removeItem(folder / "shut")) ==
               folder / "shut: Operation not permitted";
    }));
}

TEST(ZPKFileManagerTest, CopyItemNamesWhatComesAfterAFolderByItsOwnPath) {
    const TemporaryFolder folder;
    for (int index = 0; index < 50; ++index) {
        writeFile(folder / ("tree/sub" + std::to_string(index) + "/file"), "x");
    }
    ASSERT_EQ(::mkfifo((folder / "tree/fifo").c_str(), 0666), 0);
    EXPECT_EQ(messageOf(ZPKFileManager::copyItem(folder / "tree", folder / "copy")),
              folder / "tree/fifo: Neither file nor folder nor link");
}

TEST(ZPKFileManagerTest, CopyItemSaysWhatCouldNotBeCopied) {
    const TemporaryFolder folder;
    writeFile(folder / "file", "x");
    writeFile(folder / "tree/sub/file", "x");
    ASSERT_EQ(::mkfifo((folder / "tree/sub/fifo").c_str(), 0666), 0);
    const auto copy = [&](const std::string& from, const std::string& to) {
        return messageOf(ZPKFileManager::copyItem(folder / from, folder / to));
    };
    EXPECT_EQ(copy("missing", "copy"), folder / "missing: No such file or directory");
    EXPECT_EQ(copy("missing/x", "copy"), folder / "missing/x: No such file or directory");
    EXPECT_EQ(copy("file", "nowhere/copy"), folder / "nowhere/copy: No such file or directory");
    EXPECT_EQ(copy("file", "tree"), folder / "tree: File exists");
    EXPECT_EQ(copy("tree", "file"), folder / "file: File exists");
    EXPECT_EQ(copy("tree", "tree/sub/copy"), folder / "tree/sub/copy: Lies in the folder that is copied");
    EXPECT_EQ(copy("tree/", "copy"), folder / "tree/sub/fifo: Neither file nor folder nor link");
    EXPECT_EQ(readFile(folder / "copy/sub/file"), "x");
}

TEST(ZPKFileManagerTest, CopyItemSaysThatTheDiskIsFull) {
    const TemporaryFolder folder;
    writeFile(folder / "tree/sub/large", std::string(300'000, 'x'));
    std::filesystem::create_directory(folder / "small");
    if (::mount("none", (folder / "small").c_str(), "tmpfs", 0, "size=65536") != 0) {
        GTEST_SKIP() << "may not mount";
    }
    EXPECT_EQ(messageOf(ZPKFileManager::copyItem(folder / "tree", folder / "small/copy")),
              folder / "small/copy/sub/large: No space left on device");
    ::umount((folder / "small").c_str());
}

TEST(ZPKFileManagerTest, ListingsSayWhatCouldNotBeRead) {
    const TemporaryFolder folder;
    writeFile(folder / "file", "x");
    std::vector<std::string> names;
    EXPECT_EQ(messageOf(ZPKFileManager::contentsOfFolder(folder / "missing", names)),
              folder / "missing: No such file or directory");
    EXPECT_EQ(messageOf(ZPKFileManager::contentsOfFolder(folder / "file", names)),
              folder / "file: Not a directory");
    EXPECT_EQ(messageOf(ZPKFileManager::subpathsOfFolder(folder / "missing", names)),
              folder / "missing: No such file or directory");
    EXPECT_EQ(messageOf(ZPKFileManager::subpathsOfFolder(folder.path(), names)), "");
    ::chmod(folder.path().c_str(), 0755);
    std::filesystem::create_directories(folder / "closed");
    writeFile(folder / "open/file", "x");
    ::chmod((folder / "open").c_str(), 0755);
    ::chmod((folder / "closed").c_str(), 0000);
    EXPECT_TRUE(answerWithoutPrivileges([&] {
        std::vector<std::string> paths;
        const std::string message = messageOf(ZPKFileManager::subpathsOfFolder(folder.path(), paths));
        return message == folder / "closed: Permission denied" && paths.size() == 4;
    }));
}

}  // namespace
