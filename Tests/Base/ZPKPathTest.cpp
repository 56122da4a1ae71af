// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Base/ZPKPath.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

#include "Tests/Support/TemporaryFolder.h"

namespace {

using zpk_test::TemporaryFolder;
using zpk_test::writeFile;

TEST(ZPKPathTest, ComponentsAreJoinedWithOneSeparator) {
    struct Row {
        const char* folder;
        const char* component;
        const char* joined;
    };
    const Row rows[] = {
        {"/a", "b", "/a/b"},
        {"/a/", "b", "/a/b"},
        {"/a//", "//b", "/a/b"},
        {"/a", "/b/c", "/a/b/c"},
        {"/", "b", "/b"},
        {"", "b", "b"},
        {"", "/b", "/b"},
        {"/a", "", "/a"},
        {"/a/", "", "/a"},
        {"/", "", "/"},
        {"", "", ""},
        {"a", "../b", "a/../b"},
        {"a b", " c ", "a b/ c "},
        {"/", "/", "/"},
        {"/a", "b/", "/a/b/"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(ZPKPath::join(row.folder, row.component), row.joined)
            << "'" << row.folder << "' and '" << row.component << "'";
    }
}

TEST(ZPKPathTest, PathsAreTakenApart) {
    struct Row {
        const char* path;
        const char* last;
        const char* parent;
        const char* extension;
    };
    const Row rows[] = {
        {"/x/Setup.app", "Setup.app", "/x", "app"},
        {"/x/Setup.app/", "Setup.app", "/x", "app"},
        {"/x//Setup.app///", "Setup.app", "/x", "app"},
        {"Setup.APP", "Setup.APP", ".", "APP"},
        {"Setup.APP/", "Setup.APP", ".", "APP"},
        {"a.b/c", "c", "a.b", ""},
        {"a.tar.gz", "a.tar.gz", ".", "gz"},
        {"a.", "a.", ".", ""},
        {".hidden", ".hidden", ".", "hidden"},
        {"/", "/", "/", ""},
        {"///", "/", "/", ""},
        {"/a", "a", "/", ""},
        {"//a", "a", "/", ""},
        {"", "", ".", ""},
        {".", ".", ".", ""},
        {"a/..", "..", "a", ""},
        {"com.varno.Zephyrkit", "com.varno.Zephyrkit", ".", "Zephyrkit"},
        {"/x/\xFF\n name", "\xFF\n name", "/x", ""},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(ZPKPath::lastComponent(row.path), row.last) << row.path;
        EXPECT_EQ(ZPKPath::parent(row.path), row.parent) << row.path;
        EXPECT_EQ(ZPKPath::extension(row.path), row.extension) << row.path;
    }
}

TEST(ZPKPathTest, TrailingSeparatorsAreCutOff) {
    struct Row {
        const char* path;
        const char* plain;
    };
    for (const Row& row : {Row{"/a/b", "/a/b"}, Row{"/a/b/", "/a/b"}, Row{"/a/b///", "/a/b"}, Row{"a/", "a"},
                           Row{"/", "/"}, Row{"////", "/"}, Row{"", ""}, Row{"//a//", "//a"}}) {
        EXPECT_EQ(ZPKPath::withoutTrailingSeparators(row.path), row.plain) << row.path;
    }
}

TEST(ZPKPathTest, InsideIsDecidedByWholeComponents) {
    struct Row {
        const char* inner;
        const char* outer;
        bool isInside;
    };
    const Row rows[] = {
        {"/a", "/a", true},     {"/a/b", "/a", true},  {"/a/b/c", "/a", true}, {"/ab", "/a", false},
        {"/ab/c", "/a", false}, {"/a", "/a/b", false}, {"/b", "/a", false},    {"/a/", "/a", true},
        {"/a", "/a/", true},    {"/a/b", "/a/", true}, {"/ab", "/a/", false},  {"/a//b", "/a//", true},
        {"/", "/", true},       {"/a", "/", true},     {"/a", "//", true},     {"a", "/", false},
        {"a/b", "a", true},     {"ab", "a", false},    {"", "/", false},       {"/a", "", false},
        {"", "", false},        {"a", "", false},      {"/A", "/a", false},    {"", "/a", false},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(ZPKPath::isSameOrInside(row.inner, row.outer), row.isInside)
            << "'" << row.inner << "' in '" << row.outer << "'";
    }
}

class ZPKPathOnDiskTest : public ::testing::Test {
protected:
    void SetUp() override {
        writeFile(m_root + "/folder/sub/file", "x");
        writeFile(m_root + "/folders/file", "x");
        std::filesystem::create_directory_symlink("folder", m_root + "/link");
        std::filesystem::create_symlink("nowhere", m_root + "/dangling");
        std::filesystem::create_directory_symlink("../..", m_root + "/folder/sub/up");
    }

    TemporaryFolder m_folder;
    std::string m_root = std::filesystem::canonical(m_folder.path());
};

TEST_F(ZPKPathOnDiskTest, ResolvedFollowsEveryLink) {
    EXPECT_EQ(ZPKPath::resolved(m_root + "/link/sub/../sub//file"), m_root + "/folder/sub/file");
    EXPECT_EQ(ZPKPath::resolved(m_root + "/link/"), m_root + "/folder");
    EXPECT_EQ(ZPKPath::resolved("/"), "/");
    for (const std::string& path : {m_root + "/missing", m_root + "/dangling", std::string()}) {
        EXPECT_EQ(ZPKPath::resolved(path), "") << path;
    }
}

TEST_F(ZPKPathOnDiskTest, ResolvedItemLeavesTheItemItselfAlone) {
    struct Row {
        std::string path;
        std::string item;
    };
    const Row rows[] = {
        {m_root + "/link", m_root + "/link"},
        {m_root + "/link/", m_root + "/link"},
        {m_root + "/link/sub", m_root + "/folder/sub"},
        {m_root + "/link/missing", m_root + "/folder/missing"},
        {m_root + "/dangling", m_root + "/dangling"},
        {m_root + "/link/sub/up", m_root + "/folder/sub/up"},
        {m_root + "/link/sub/..", m_root + "/folder"},
        {m_root + "/link/.", m_root + "/folder"},
        {m_root + "/missing/item", ""},
        {m_root + "/folder/sub/file/item", ""},
        {"/", "/"},
        {"", ""},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(ZPKPath::resolvedItem(row.path), row.item) << row.path;
    }
}

TEST_F(ZPKPathOnDiskTest, ItemsAreInsideHoweverTheyAreWritten) {
    struct Row {
        std::string inner;
        std::string outer;
        bool isInside;
    };
    const Row rows[] = {
        {"folder", "folder", true},
        {"folder/", "folder", true},
        {"folder/sub/file", "folder", true},
        {"link/sub/file", "folder", true},
        {"folder/sub/file", "link", false},
        {"link", "link", true},
        {"folder/sub/up/folder/sub", "folder", true},
        {"folder/sub", "folder/sub/up/folder", true},
        {"folders/file", "folder", false},
        {"folder", "folder/sub", false},
        {"folder/missing", "folder", true},
        {"link/missing", "folder", true},
        {"missing", "missing", true},
        {"dangling", "dangling", true},
        {"missing/x", "missing", false},
        {"folder/sub/../../folders", "folder", false},
        {"folder/.", "folder", true},
        {"folder", "folder/sub/..", true},
        {"folder", "/", true},
        {"folder", "", false},
        {"", "folder", false},
    };
    ASSERT_EQ(::chdir(m_root.c_str()), 0);
    for (const Row& row : rows) {
        EXPECT_EQ(ZPKPath::isItemOrInside(row.inner, row.outer), row.isInside)
            << "'" << row.inner << "' in '" << row.outer << "'";
    }
    EXPECT_TRUE(ZPKPath::isItemOrInside("folder/sub", m_root + "/folder"));
    ASSERT_EQ(::chdir("/"), 0);
}

}  // namespace
