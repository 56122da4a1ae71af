// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Package/CDirectoryHolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <type_traits>

#include "Tests/Support/TemporaryFolder.h"

namespace {

using varno_zpk::CDirectoryHolder;
using zpk_test::ReadFile;
using zpk_test::TemporaryFolder;
using zpk_test::WriteFile;

using Paths = std::vector<std::string>;

bool Exists(const std::string& path) {
    return std::filesystem::exists(path);
}

static_assert(!std::is_copy_constructible_v<CDirectoryHolder> &&
              !std::is_copy_assignable_v<CDirectoryHolder>);

TEST(CDirectoryHolderTest, FolderIsMadeAfreshAndDeletedAtTheEnd) {
    const TemporaryFolder folder;
    const std::string path = folder / "a/staging";
    WriteFile(path + "/left/over", "old");
    auto holder = std::make_unique<CDirectoryHolder>(path, path);
    EXPECT_TRUE(std::filesystem::is_empty(path));
    WriteFile(path + "/new", "x");
    holder.reset();
    EXPECT_FALSE(Exists(path));
    EXPECT_TRUE(Exists(folder / "a"));
}

TEST(CDirectoryHolderTest, EmptyCreatePathMakesNothingButTheOtherIsDeleted) {
    const TemporaryFolder folder;
    WriteFile(folder / "remove/file", "kept until the end");
    {
        const CDirectoryHolder holder("", folder / "remove");
        EXPECT_EQ(ReadFile(folder / "remove/file"), "kept until the end");
    }
    EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

TEST(CDirectoryHolderTest, EmptyRemovePathDeletesNothing) {
    const TemporaryFolder folder;
    {
        const CDirectoryHolder holder(folder / "made", "");
        const CDirectoryHolder nothing("", "");
    }
    EXPECT_TRUE(Exists(folder / "made"));
}

TEST(CDirectoryHolderTest, FileAtTheCreatePathIsReplaced) {
    const TemporaryFolder folder;
    WriteFile(folder / "path", "file");
    const CDirectoryHolder holder(folder / "path", folder / "path");
    EXPECT_TRUE(std::filesystem::is_directory(folder / "path"));
}

TEST(CDirectoryHolderTest, LinkAtTheCreatePathIsReplacedAndItsTargetKept) {
    const TemporaryFolder folder;
    WriteFile(folder / "outside/kept", "kept");
    std::filesystem::create_directory_symlink("outside", folder / "path");
    {
        const CDirectoryHolder holder(folder / "path", folder / "path");
        EXPECT_FALSE(std::filesystem::is_symlink(folder / "path"));
        EXPECT_TRUE(std::filesystem::is_empty(folder / "path"));
    }
    EXPECT_EQ(ReadFile(folder / "outside/kept"), "kept");
}

TEST(CDirectoryHolderTest, FolderThatCannotBeMadeIsNoError) {
    const TemporaryFolder folder;
    WriteFile(folder / "file", "kept");
    {
        const CDirectoryHolder holder(folder / "file/below", folder / "file/below");
        const CDirectoryHolder list(Paths{folder / "file/below", folder / "made"}, Paths{});
    }
    EXPECT_TRUE(Exists(folder / "made")) << "the list goes on";
    EXPECT_EQ(ReadFile(folder / "file"), "kept");
}

TEST(CDirectoryHolderTest, ListsAreMadeAndDeletedInOrder) {
    const TemporaryFolder folder;
    WriteFile(folder / "a/old", "old");
    {
        // Made after "a", "a/b" survives; the other way round "a" would have deleted it.
        const CDirectoryHolder holder(Paths{folder / "a", folder / "a/b", folder / "c"},
                                      Paths{folder / "missing", folder / "c", folder / "a/b"});
        EXPECT_TRUE(Exists(folder / "a/b"));
        EXPECT_TRUE(Exists(folder / "c"));
        EXPECT_FALSE(Exists(folder / "a/old"));
    }
    EXPECT_TRUE(Exists(folder / "a"));
    EXPECT_FALSE(Exists(folder / "a/b"));
    EXPECT_FALSE(Exists(folder / "c"));
    const CDirectoryHolder reversed(Paths{folder / "a/b", folder / "a"}, Paths{});
    EXPECT_FALSE(Exists(folder / "a/b"));
}

TEST(CDirectoryHolderTest, HolderIsOwnedByWhoeverMadeIt) {
    const TemporaryFolder folder;
    WriteFile(folder / "staging/old", "old");
    auto holder = std::make_unique<CDirectoryHolder>(folder / "staging", folder / "staging");
    holder = std::make_unique<CDirectoryHolder>(folder / "other", folder / "other");
    EXPECT_FALSE(Exists(folder / "staging"));
    EXPECT_TRUE(Exists(folder / "other"));
}

}  // namespace
