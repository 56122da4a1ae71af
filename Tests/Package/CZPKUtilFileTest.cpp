// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>

#include "Package/CZPKUtil.h"
#include "Tests/Support/TemporaryFolder.h"

namespace {

using varno_zpk::CZPKUtil;
using zpk_test::readFile;
using zpk_test::TemporaryFolder;
using zpk_test::writeFile;

mode_t modeOf(const std::string& path) {
    struct stat attributes;
    EXPECT_EQ(::lstat(path.c_str(), &attributes), 0) << path;
    return attributes.st_mode & 07777;
}

TEST(CZPKUtilFileTest, MakeDirectoryMakesMissingParentsWithAllPermissions) {
    const TemporaryFolder folder;
    const mode_t before = ::umask(0);
    EXPECT_TRUE(CZPKUtil::MakeDirectoryWithIntermediateDirectories(folder / "a/b/c"));
    ::umask(before);
    for (const char* const path : {"a", "a/b", "a/b/c"}) {
        EXPECT_EQ(modeOf(folder / path), 0777u) << path;
    }
    EXPECT_TRUE(CZPKUtil::MakeDirectoryWithIntermediateDirectories(folder / "a/b/c")) << "already there";
}

TEST(CZPKUtilFileTest, MakeDirectoryFailsOnAFile) {
    const TemporaryFolder folder;
    writeFile(folder / "file", "kept");
    EXPECT_FALSE(CZPKUtil::MakeDirectoryWithIntermediateDirectories(folder / "file"));
    EXPECT_FALSE(CZPKUtil::MakeDirectoryWithIntermediateDirectories(folder / "file/below"));
    EXPECT_FALSE(CZPKUtil::MakeDirectoryWithIntermediateDirectories(""));
    EXPECT_EQ(readFile(folder / "file"), "kept");
}

TEST(CZPKUtilFileTest, CopyOntoAnExistingFolderReplacesItEntirely) {
    const TemporaryFolder folder;
    writeFile(folder / "source/new", "new");
    writeFile(folder / "target/old", "old");
    writeFile(folder / "target/new/below", "old");
    EXPECT_TRUE(CZPKUtil::Copy(folder / "source", folder / "target"));
    EXPECT_EQ(readFile(folder / "target/new"), "new");
    EXPECT_FALSE(std::filesystem::exists(folder / "target/old"));
    EXPECT_EQ(readFile(folder / "source/new"), "new");
}

TEST(CZPKUtilFileTest, CopyMakesTheParentFolderAndReplacesAnything) {
    const TemporaryFolder folder;
    writeFile(folder / "source", "new");
    writeFile(folder / "outside", "kept");
    EXPECT_TRUE(CZPKUtil::Copy(folder / "source", folder / "a/b/copy"));
    EXPECT_EQ(readFile(folder / "a/b/copy"), "new");
    std::filesystem::create_symlink(folder / "outside", folder / "link");
    std::filesystem::create_symlink("nowhere", folder / "dangling");
    for (const char* const destination : {"link", "dangling", "a"}) {
        EXPECT_TRUE(CZPKUtil::Copy(folder / "source", folder / destination)) << destination;
        EXPECT_TRUE(std::filesystem::is_regular_file(std::filesystem::symlink_status(folder / destination)));
        EXPECT_EQ(readFile(folder / destination), "new") << destination;
    }
    EXPECT_EQ(readFile(folder / "outside"), "kept");
    ASSERT_EQ(::chdir(folder.path().c_str()), 0);
    EXPECT_TRUE(CZPKUtil::Copy("source", "relative"));
    EXPECT_TRUE(CZPKUtil::Copy("source", "x/y/relative"));
    EXPECT_EQ(readFile(folder / "x/y/relative"), "new");
}

TEST(CZPKUtilFileTest, CopyOfAMissingItemRemovesTheTargetAllTheSame) {
    const TemporaryFolder folder;
    writeFile(folder / "target", "old");
    EXPECT_FALSE(CZPKUtil::Copy(folder / "missing", folder / "target"));
    EXPECT_FALSE(std::filesystem::exists(folder / "target"));
}

TEST(CZPKUtilFileTest, CopyNeverDeletesItsOwnSource) {
    const TemporaryFolder folder;
    writeFile(folder / "tree/sub/file", "kept");
    std::filesystem::create_directory_symlink("tree", folder / "link");
    ASSERT_EQ(::chdir((folder / "tree").c_str()), 0);
    EXPECT_FALSE(CZPKUtil::Copy(folder / "tree", folder / "tree"));
    EXPECT_FALSE(CZPKUtil::Copy(folder / "tree/sub", folder / "tree"));
    EXPECT_FALSE(CZPKUtil::Copy(folder / "link/sub", folder / "tree/"));
    EXPECT_FALSE(CZPKUtil::Copy("sub/file", folder / "link/sub"));
    EXPECT_FALSE(CZPKUtil::Copy("sub", "./sub"));
    EXPECT_FALSE(CZPKUtil::Copy(folder / "tree", folder / "tree/sub/inside"));
    EXPECT_EQ(readFile(folder / "tree/sub/file"), "kept");
    EXPECT_TRUE(CZPKUtil::Copy(folder / "tree", folder / "tree2")) << "a name that only begins alike";
}

TEST(CZPKUtilFileTest, CopyBelowAMissingFolderMayEndInAnyName) {
    const TemporaryFolder folder;
    writeFile(folder / "source", "new");
    // Taken for a path from the root, this name would be a folder that holds the source.
    const std::string name = std::filesystem::path(folder.path()).relative_path().begin()->string();
    EXPECT_TRUE(CZPKUtil::Copy(folder / "source", folder / ("missing/" + name)));
    EXPECT_EQ(readFile(folder / ("missing/" + name)), "new");
    ASSERT_EQ(::chdir(folder.path().c_str()), 0);
    EXPECT_FALSE(CZPKUtil::Copy("source", "source//"));
    EXPECT_EQ(readFile(folder / "source"), "new");
}

TEST(CZPKUtilFileTest, DeleteFileAndDeleteFolderRemoveWhateverIsThere) {
    const TemporaryFolder folder;
    for (const auto remove : {&CZPKUtil::DeleteFile, &CZPKUtil::DeleteFolder}) {
        writeFile(folder / "tree/sub/file", "x");
        writeFile(folder / "file", "x");
        EXPECT_TRUE(remove(folder / "tree"));
        EXPECT_TRUE(remove(folder / "file"));
        EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
        EXPECT_FALSE(remove(folder / "file"));
        EXPECT_FALSE(remove(""));
    }
}

TEST(CZPKUtilFileTest, FilePathListHoldsWhatIsNoFolder) {
    const TemporaryFolder folder;
    for (const char* const name : {"a/1", "a/b/2", "a/b/.hidden", "top", "with blank", "\xFF\n"}) {
        writeFile(folder / ("volume/" + std::string(name)), "x");
    }
    std::filesystem::create_directories(folder / "volume/empty/empty");
    std::filesystem::create_symlink("../top", folder / "volume/a/link");
    std::filesystem::create_symlink("nowhere", folder / "volume/a/dangling");
    std::filesystem::create_directory_symlink("b", folder / "volume/a/folderLink");
    ASSERT_EQ(::mkfifo((folder / "volume/fifo").c_str(), 0666), 0);
    std::vector<std::string> expected{"old"};
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder / "volume")) {
        if (entry.exists() && !entry.is_directory()) {
            expected.push_back(entry.path());
        }
    }
    ASSERT_EQ(expected.size(), 9u);
    for (const char* const ending : {"", "/"}) {
        std::vector<std::string> list{"old"};
        CZPKUtil::GetFilePathList(folder / "volume" + ending, &list);
        EXPECT_EQ(list, expected) << "appended, in the file system's order";
    }
}

TEST(CZPKUtilFileTest, FilePathListOfEmptySubfoldersIsEmpty) {
    const TemporaryFolder folder;
    std::filesystem::create_directories(folder / "a/b/c");
    std::vector<std::string> list;
    CZPKUtil::GetFilePathList(folder.path(), &list);
    CZPKUtil::GetFilePathList(folder / "missing", &list);
    CZPKUtil::GetFilePathList("", &list);
    EXPECT_TRUE(list.empty());
}

TEST(CZPKUtilFileTest, ExistenceOfFilesAndFolders) {
    const TemporaryFolder folder;
    writeFile(folder / "file", "x");
    std::filesystem::create_directory_symlink(".", folder / "link");
    std::filesystem::create_symlink("nowhere", folder / "dangling");
    struct Row {
        std::string path;
        bool exists, isFolder;
    };
    for (const Row& row : {Row{folder.path(), true, true}, Row{folder / "file", true, false},
                           Row{folder / "link", true, true}, Row{folder / "dangling", false, false},
                           Row{folder / "missing", false, false}, Row{"", false, false}}) {
        EXPECT_EQ(CZPKUtil::IsFileExist(row.path), row.exists) << row.path;
        EXPECT_EQ(CZPKUtil::IsFolderExist(row.path), row.isFolder) << row.path;
    }
}

TEST(CZPKUtilFileTest, ListOfAFolderGivenThroughALinkIsTheFolders) {
    const TemporaryFolder folder;
    writeFile(folder / "real/sub/file", "x");
    std::filesystem::create_symlink("real", folder / "link");
    for (const char* const spelling : {"link", "link/"}) {
        std::vector<std::string> list;
        CZPKUtil::GetFilePathList(folder / spelling, &list);
        EXPECT_EQ(list, std::vector{folder / "link/sub/file"}) << spelling;
    }
}

}  // namespace
