// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/MemberPath.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Archive/Failure.h"

namespace {

using zpk_archive::MemberFailure;
using zpk_archive::MemberPath;

std::vector<std::string> componentsOf(const MemberPath& path) {
    std::vector<std::string> components;
    for (std::size_t i = 0; i < path.depth(); ++i) {
        components.emplace_back(path.component(i));
    }
    return components;
}

std::string refusalOf(const std::string& name) {
    try {
        MemberPath path(name);
    } catch (const MemberFailure& failure) {
        return failure.what();
    }
    return "taken";
}

TEST(MemberPathTest, TakesApartWhatStaysInside) {
    struct Good {
        const char* name;
        std::vector<std::string> components;
    };
    for (const Good& row : std::vector<Good>{{"a", {"a"}},
                                             {"a/b", {"a", "b"}},
                                             {"./a//b/", {"a", "b"}},
                                             {".", {}},
                                             {"./", {}},
                                             {"...", {"..."}},
                                             {"..a/b..", {"..a", "b.."}},
                                             {"\\x", {"\\x"}},
                                             {"C:x", {"C:x"}},
                                             {"....//", {"...."}}}) {
        EXPECT_EQ(componentsOf(MemberPath(row.name)), row.components) << row.name;
    }
    EXPECT_EQ(componentsOf(MemberPath(std::string(255, 'n'))).front(), std::string(255, 'n'));
}

TEST(MemberPathTest, RefusesWhatLeadsElsewhereAndSaysWhy) {
    struct Bad {
        std::string name;
        const char* reason;
    };
    for (const Bad& row : std::vector<Bad>{{"", "the name is empty"},
                                           {"/", "the name is absolute"},
                                           {"/x", "the name is absolute"},
                                           {"//x", "the name is absolute"},
                                           {"..", "the name climbs out of the folder"},
                                           {"../x", "the name climbs out of the folder"},
                                           {"a/../b", "the name climbs out of the folder"},
                                           {"a/../../b", "the name climbs out of the folder"},
                                           {".//../x", "the name climbs out of the folder"},
                                           {"a/..", "the name climbs out of the folder"},
                                           {"a/../", "the name climbs out of the folder"},
                                           {std::string(256, 'n'), "a part of the name is too long"},
                                           {"a/" + std::string(70000, 'n'), "a part of the name is too long"},
                                           {std::string("a\0b", 3), "the name holds a null character"}}) {
        EXPECT_EQ(refusalOf(row.name), row.reason) << row.name.substr(0, 20);
    }
}

TEST(MemberPathTest, RefusesWhatLiesDeeperThanAnyPath) {
    std::string name = "d";
    for (int part = 1; part < 2048; ++part) {
        name += "/./d";
    }
    EXPECT_EQ(MemberPath(name + "/").depth(), 2048U);
    EXPECT_THROW(MemberPath(name + "/d"), MemberFailure);
}

TEST(MemberPathTest, KnowsTheFolderItself) {
    EXPECT_TRUE(MemberPath().isFolderItself());
    EXPECT_TRUE(MemberPath("./.").isFolderItself());
    EXPECT_FALSE(MemberPath("a").isFolderItself());
    EXPECT_EQ(MemberPath(".").text(), "");
}

TEST(MemberPathTest, TextIsThePathWithoutWhatAddsNoStep) {
    EXPECT_EQ(MemberPath("./a//b/c/").text(), "a/b/c");
    EXPECT_EQ(MemberPath("a").text(), "a");
}

TEST(MemberPathTest, WaysOfWritingOnePathAreEqual) {
    EXPECT_EQ(MemberPath("a/b"), MemberPath("./a//b/"));
    EXPECT_EQ(MemberPath("a/b").hash(), MemberPath("a/./b").hash());
    EXPECT_NE(MemberPath("a/b"), MemberPath("ab"));
    EXPECT_NE(MemberPath("a/b").hash(), MemberPath("ab").hash());
}

TEST(MemberPathTest, SiblingStandsInTheSameFolder) {
    const MemberPath path("a/b/._c");
    EXPECT_EQ(path.sibling("c"), MemberPath("a/b/c"));
    EXPECT_EQ(path.sibling("longer than before").text(), "a/b/longer than before");
    EXPECT_STREQ(path.leaf(), "._c");
    EXPECT_STREQ(path.sibling("c").leaf(), "c");
    EXPECT_EQ(MemberPath("top").sibling("other"), MemberPath("other"));
}

}  // namespace
