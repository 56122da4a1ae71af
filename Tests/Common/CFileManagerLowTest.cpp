// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Common/CFileManagerLow.h"

#include <dirent.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>

#include "Tests/Support/TemporaryFolder.h"

using varno_zpk::CFileManagerLow;
using zpk_test::TemporaryFolder;
using zpk_test::writeFile;

namespace {

constexpr uid_t kNobody = 65534;

/// Makes `folder` the working folder for a stretch of code.
class WorkingFolder {
public:
    explicit WorkingFolder(const std::string& folder) : m_previous(std::filesystem::current_path()) {
        std::filesystem::current_path(folder);
    }
    ~WorkingFolder() { std::filesystem::current_path(m_previous); }
    WorkingFolder(const WorkingFolder&) = delete;
    WorkingFolder& operator=(const WorkingFolder&) = delete;

private:
    std::filesystem::path m_previous;
};

std::string converted(const std::string& path) {
    std::string out("earlier");
    CFileManagerLow::ConvertRelToAbsPath(path.c_str(), out);
    return out;
}

std::vector<std::string> contents(const std::string& folder) {
    std::vector<std::string> names;
    CFileManagerLow::GetFolderContents(folder.c_str(), names);
    return names;
}

std::vector<std::string> sortedContents(const std::string& folder) {
    std::vector<std::string> names = contents(folder);
    std::sort(names.begin(), names.end());
    return names;
}

std::vector<std::string> readOrder(const std::string& folder) {
    std::vector<std::string> names;
    DIR* stream = opendir(folder.c_str());
    EXPECT_NE(stream, nullptr);
    while (const dirent* entry = readdir(stream)) {
        const std::string name(entry->d_name);
        if (name != "." && name != "..") {
            names.push_back(name);
        }
    }
    closedir(stream);
    return names;
}

/// For a child process: gives up the right to read everything, then lists.
[[noreturn]] void exitWithCountAsNobody(const std::string& folder) {
    if (::geteuid() == 0 && ::setuid(kNobody) != 0) {
        ::_exit(99);
    }
    std::vector<std::string> names{"earlier"};
    CFileManagerLow::GetFolderContents(folder.c_str(), names);
    ::_exit(static_cast<int>(names.size()));
}

}  // namespace

TEST(FileManagerLowTest, PublicDocumentFolderIsSharedAmongTheUsersFolders) {
    std::string path("earlier");
    EXPECT_TRUE(CFileManagerLow::GetPublicDocumentFolderPath(path));
    EXPECT_EQ(path, "/home/Shared");
}

TEST(FileManagerLowTest, AbsolutePathIsOnlyStandardized) {
    const struct {
        const char* path;
        const char* expected;
    } rows[] = {
        {"/", "/"},
        {"//", "/"},
        {"///", "/"},
        {"/a", "/a"},
        {"//a", "/a"},
        {"///a//b///", "/a/b"},
        {"/a/", "/a"},
        {"/.", "/"},
        {"/./", "/"},
        {"/a/.", "/a"},
        {"/./a/./b", "/a/b"},
        {"/a/..", "/"},
        {"/a/../", "/"},
        {"/a/b/../c", "/a/c"},
        {"/a/b/..", "/a"},
        {"/a/b/../../c/./d/", "/c/d"},
        {"/a//..//b", "/b"},
        {"/..", "/"},
        {"/../..", "/"},
        {"/../../a", "/a"},
        {"/a/../../..", "/"},
        {"/...", "/..."},
        {"/.a/..b/c.", "/.a/..b/c."},
        {"/~", "/~"},
        {"/~root/x", "/~root/x"},
        {"/a b/\n\t", "/a b/\n\t"},
        {"/\xFF/\xE6\x97\xA5/../\xC3", "/\xFF/\xC3"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(converted(row.path), row.expected) << row.path;
    }
}

TEST(FileManagerLowTest, RelativePathIsTakenFromTheWorkingFolder) {
    const TemporaryFolder temporary;
    const std::string root = std::filesystem::canonical(temporary.path()).string();
    std::filesystem::create_directories(root + "/a/b");
    const WorkingFolder working(root + "/a/b");
    const struct {
        const char* path;
        std::string expected;
    } rows[] = {
        {"../x", root + "/a/x"},
        {"x", root + "/a/b/x"},
        {"x/", root + "/a/b/x"},
        {"./x//y/.", root + "/a/b/x/y"},
        {"../..", root},
        {"", root + "/a/b"},
        {".", root + "/a/b"},
        {"../../../../../../../../../../../../../../../../x", "/x"},
        {"~", root + "/a/b/~"},
        {"~root/x", root + "/a/b/~root/x"},
        {"~/../x", root + "/a/b/x"},
        {"\xFF", root + "/a/b/\xFF"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(converted(row.path), row.expected) << row.path;
    }
}

TEST(FileManagerLowTest, RelativePathFromTheRootHasOneSeparator) {
    const WorkingFolder working("/");
    EXPECT_EQ(converted("x"), "/x");
    EXPECT_EQ(converted("../x"), "/x");
    EXPECT_EQ(converted(""), "/");
}

TEST(FileManagerLowTest, ParentOfALinkIsTakenFromTheText) {
    const TemporaryFolder temporary;
    std::filesystem::create_directories(temporary / "far/away");
    std::filesystem::create_symlink(temporary / "far/away", temporary / "link");
    EXPECT_EQ(converted(temporary / "link/../x"), temporary / "x");
}

TEST(FileManagerLowTest, RelativePathStaysRelativeWithoutAWorkingFolder) {
    const TemporaryFolder temporary;
    std::filesystem::create_directory(temporary / "gone");
    const WorkingFolder working(temporary / "gone");
    std::filesystem::remove(temporary / "gone");
    EXPECT_EQ(converted("x/../y/"), "y");
    EXPECT_EQ(converted("~/x"), "~/x");
    EXPECT_EQ(converted("/a/../x"), "/x");
}

TEST(FileManagerLowTest, PathMayLieInTheOutput) {
    std::string path("/a/../b");
    CFileManagerLow::ConvertRelToAbsPath(path.c_str(), path);
    EXPECT_EQ(path, "/b");
}

TEST(FileManagerLowTest, DeepPathIsStandardized) {
    std::string path;
    for (int i = 0; i < 2000; ++i) {
        path += "/a/./b/..";
    }
    std::string expected;
    for (int i = 0; i < 2000; ++i) {
        expected += "/a";
    }
    EXPECT_EQ(converted(path), expected);
}

TEST(FileManagerLowTest, FolderContentsAreTheNamesOfAllEntries) {
    const TemporaryFolder folder;
    writeFile(folder / "file", "");
    writeFile(folder / ".hidden", "");
    writeFile(folder / "sub/deep", "");
    writeFile(folder / "\xFF\n", "");
    std::filesystem::create_symlink("nowhere", folder / "dangling");
    EXPECT_EQ(sortedContents(folder.path()),
              (std::vector<std::string>{".hidden", "dangling", "file", "sub", "\xFF\n"}));
}

TEST(FileManagerLowTest, FolderContentsKeepTheOrderOfTheFileSystem) {
    const TemporaryFolder folder;
    for (int i = 0; i < 200; ++i) {
        writeFile(folder / std::to_string(i * 7919 % 200), "");
    }
    const std::vector<std::string> names = contents(folder.path());
    EXPECT_EQ(names.size(), 200u);
    EXPECT_EQ(names, readOrder(folder.path()));
}

TEST(FileManagerLowTest, FolderContentsReplaceEarlierEntries) {
    const TemporaryFolder folder;
    writeFile(folder / "file", "");
    std::vector<std::string> names{"earlier", "still earlier"};
    CFileManagerLow::GetFolderContents(folder.path().c_str(), names);
    EXPECT_EQ(names, (std::vector<std::string>{"file"}));
}

TEST(FileManagerLowTest, WhatIsNoFolderHasNoContents) {
    const TemporaryFolder folder;
    writeFile(folder / "file", "");
    std::filesystem::create_symlink("nowhere", folder / "dangling");
    std::filesystem::create_directory(folder / "empty");
    for (const std::string& path :
         {folder / "missing", folder / "file", folder / "dangling", folder / "empty", std::string()}) {
        std::vector<std::string> names{"earlier"};
        CFileManagerLow::GetFolderContents(path.c_str(), names);
        EXPECT_TRUE(names.empty()) << path;
    }
}

TEST(FileManagerLowTest, FolderThatMayNotBeReadHasNoContents) {
    const TemporaryFolder folder;
    writeFile(folder / "closed/file", "");
    ASSERT_EQ(::chmod(folder.path().c_str(), 0755), 0);
    EXPECT_EXIT(exitWithCountAsNobody(folder / "closed"), testing::ExitedWithCode(1), "");
    ASSERT_EQ(::chmod((folder / "closed").c_str(), 0), 0);
    EXPECT_EXIT(exitWithCountAsNobody(folder / "closed"), testing::ExitedWithCode(0), "");
    ::chmod((folder / "closed").c_str(), 0755);
}

TEST(FileManagerLowTest, OnlyAFolderItselfIsAFolder) {
    const TemporaryFolder folder;
    writeFile(folder / "file", "");
    std::filesystem::create_directory(folder / "sub");
    std::filesystem::create_directory_symlink("sub", folder / "link");
    std::filesystem::create_symlink("nowhere", folder / "dangling");
    const struct {
        std::string path;
        bool isFolder;
    } rows[] = {
        {folder / "sub", true},
        {folder / "sub/", true},
        {folder / "sub/.", true},
        {"/", true},
        {"//", true},
        {".", true},
        {folder / "file", false},
        {folder / "file/", false},
        {folder / "link", false},
        {folder / "link/", false},
        {folder / "link//", false},
        {folder / "dangling", false},
        {"", false},
        {folder / "missing", false},
        {folder / "file/below", false},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(CFileManagerLow::IsFolder(row.path.c_str()), row.isFolder) << row.path;
    }
}
