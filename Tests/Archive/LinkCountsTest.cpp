// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/LinkCounts.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "Base/ZPKFileDescriptor.h"
#include "Tests/Support/TemporaryFolder.h"

namespace {

namespace fs = std::filesystem;
using zpk_archive::FileIdentity;
using zpk_archive::LinkCounts;
using zpk_test::TemporaryFolder;
using zpk_test::writeFile;

FileIdentity identityOf(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(::lstat(path.c_str(), &status), 0) << path;
    return FileIdentity(status);
}

TEST(LinkCountsTest, CountsTheNamesInsideTheTreeAlone) {
    const TemporaryFolder folder;
    writeFile(folder / "D/sub/alone", "1");
    writeFile(folder / "D/sub/linked outside", "2");
    fs::create_hard_link(folder / "D/sub/linked outside", folder / "outside");
    writeFile(folder / "D/twice", "3");
    fs::create_hard_link(folder / "D/twice", folder / "D/sub/deep twice");
    fs::create_hard_link(folder / "D/twice", folder / "twice outside");
    fs::create_symlink("nowhere", folder / "D/link");
    fs::create_hard_link(folder / "D/link", folder / "D/sub/link");
    fs::create_hard_link(folder / "D/link", folder / "D/link again");
    const ZPKFileDescriptor tree(::open((folder / "D").c_str(), O_RDONLY | O_CLOEXEC));
    LinkCounts counts = LinkCounts::ofTree(tree.get());
    EXPECT_EQ(counts.find(identityOf(folder / "D/sub/alone")), nullptr);
    EXPECT_EQ(counts.find(identityOf(folder / "outside")), nullptr);
    EXPECT_EQ(counts.find(identityOf(folder / "D/sub")), nullptr);
    // Numbered as they are asked for.
    const LinkCounts::File* const link = counts.find(identityOf(folder / "D/link"));
    ASSERT_NE(link, nullptr);
    EXPECT_EQ(link->names, 3U);
    EXPECT_EQ(link->number, 1U);
    const LinkCounts::File* const file = counts.find(identityOf(folder / "D/twice"));
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(file->names, 2U);
    EXPECT_EQ(file->number, 2U);
    EXPECT_EQ(counts.find(identityOf(folder / "D/sub/link"))->number, 1U);
}

TEST(LinkCountsTest, FolderThatCannotBeLookedIntoHoldsNothing) {
    LinkCounts counts = LinkCounts::ofTree(-1);
    EXPECT_EQ(counts.find({}), nullptr);
    EXPECT_EQ(LinkCounts().find({}), nullptr);
}

}  // namespace
