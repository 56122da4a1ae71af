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
using zpk_test::readFile;
using zpk_test::TemporaryFolder;
using zpk_test::writeFile;

using Paths = std::vector<std::string>;

bool exists(const std::string& path) {
    return std::filesystem::exists(path);
}

static_assert(!std::is_copy_constructible_v<CDirectoryHolder> &&
              !std::is_copy_assignable_v<CDirectoryHolder>);

TEST(CDirectoryHolderTest, FolderIsMadeAfreshAndDeletedAtTheEnd) {
    const TemporaryFolder folder;
    const std::string path = folder / "a/staging";
    writeFile(path + "/left/over", "old");
    auto holder = std::make_unique<CDirectoryHolder>(path, path);
    EXPECT_TRUE(std::filesystem::is_empty(path));
    writeFile(path + "/new", "x");
    holder.reset();
    EXPECT_FALSE(exists(path));
    EXPECT_TRUE(exists(folder / "a"));
}

TEST(CDirectoryHolderTest, EmptyCreatePathMakesNothingButTheOtherIsDeleted) {
    const TemporaryFolder folder;
    writeFile(folder / "remove/file", "kept until the end");
    {
        const CDirectoryHolder holder("", folder / "remove");
        EXPECT_EQ(readFile(folder / "remove/file"), "kept until the end");
    }
    EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

TEST(CDirectoryHolderTest, EmptyCreatePathMakesNothingAtTheOther) {
    const TemporaryFolder folder;
    const CDirectoryHolder holder("", folder / "missing");
    EXPECT_FALSE(exists(folder / "missing"));
}

TEST(CDirectoryHolderTest, EmptyRemovePathDeletesNothing) {
    const TemporaryFolder folder;
    {
        const CDirectoryHolder holder(folder / "made", "");
        const CDirectoryHolder nothing("", "");
    }
    EXPECT_TRUE(exists(folder / "made"));
}

TEST(CDirectoryHolderTest, FileAtTheCreatePathIsReplaced) {
    const TemporaryFolder folder;
    writeFile(folder / "path", "file");
    const CDirectoryHolder holder(folder / "path", folder / "path");
    EXPECT_TRUE(std::filesystem::is_directory(folder / "path"));
}

TEST(CDirectoryHolderTest, LinkAtTheCreatePathIsReplacedAndItsTargetKept) {
    const TemporaryFolder folder;
    writeFile(folder / "outside/kept", "kept");
    std::filesystem::create_directory_symlink("outside", folder / "path");
    {
        const CDirectoryHolder holder(folder / "path", folder / "path");
        EXPECT_FALSE(std::filesystem::is_symlink(folder / "path"));
        EXPECT_TRUE(std::filesystem::is_empty(folder / "path"));
    }
    EXPECT_EQ(readFile(folder / "outside/kept"), "kept");
}

TEST(CDirectoryHolderTest, FolderThatCannotBeMadeIsNoError) {
    const TemporaryFolder folder;
    writeFile(folder / "file", "kept");
    {
        const CDirectoryHolder holder(folder / "file/below", folder / "file/below");
        const CDirectoryHolder list(Paths{folder / "file/below", folder / "made"}, Paths{});
    }
    EXPECT_TRUE(exists(folder / "made")) << "the list goes on";
    EXPECT_EQ(readFile(folder / "file"), "kept");
}

TEST(CDirectoryHolderTest, ListsAreMadeAndDeletedInOrder) {
    const TemporaryFolder folder;
    writeFile(folder / "a/old", "old");
    {
        // Made after "a", "a/b" survives; the other way round "a" would have deleted it.
        const CDirectoryHolder holder(Paths{folder / "a", folder / "a/b", folder / "c"},
                                      Paths{folder / "missing", folder / "c", folder / "a/b"});
        EXPECT_TRUE(exists(folder / "a/b"));
        EXPECT_TRUE(exists(folder / "c"));
        EXPECT_FALSE(exists(folder / "a/old"));
    }
    EXPECT_TRUE(exists(folder / "a"));
    EXPECT_FALSE(exists(folder / "a/b"));
    EXPECT_FALSE(exists(folder / "c"));
    const CDirectoryHolder reversed(Paths{folder / "a/b", folder / "a"}, Paths{});
    EXPECT_FALSE(exists(folder / "a/b"));
}

TEST(CDirectoryHolderTest, HolderIsOwnedByWhoeverMadeIt) {
    const TemporaryFolder folder;
    writeFile(folder / "staging/old", "old");
    auto holder = std::make_unique<CDirectoryHolder>(folder / "staging", folder / "staging");
    holder = std::make_unique<CDirectoryHolder>(folder / "other", folder / "other");
    EXPECT_FALSE(exists(folder / "staging"));
    EXPECT_TRUE(exists(folder / "other"));
}

}  // namespace
