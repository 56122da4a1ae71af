// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Base/ZPKEnvironment.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <utility>
#include <vector>

namespace {

using Value = std::optional<std::string>;

constexpr const char* kVariable = "ZPK_ENVIRONMENT_TEST";

class ZPKEnvironmentTest : public ::testing::Test {
protected:
    void TearDown() override { ::unsetenv(kVariable); }

    static void set(const Value& value) {
        if (value) {
            ::setenv(kVariable, value->c_str(), 1);
        } else {
            ::unsetenv(kVariable);
        }
    }
};

TEST_F(ZPKEnvironmentTest, EmptyCountsAsUnset) {
    struct Row {
        Value set, value;
    };
    for (const Row& row : {Row{std::nullopt, std::nullopt}, Row{"", std::nullopt}, Row{" ", " "},
                           Row{"x=y\n\xFF", "x=y\n\xFF"}}) {
        set(row.set);
        EXPECT_EQ(ZPKEnvironment::value(kVariable), row.value);
        EXPECT_EQ(ZPKEnvironment::isSet(kVariable), row.value.has_value());
    }
}

TEST_F(ZPKEnvironmentTest, PathsAreAbsoluteOrNone) {
    struct Row {
        Value set, path;
    };
    for (const Row& row :
         {Row{std::nullopt, std::nullopt}, Row{"", std::nullopt}, Row{"relative", std::nullopt},
          Row{"./x", std::nullopt}, Row{"~", std::nullopt}, Row{"/", "/"}, Row{"///", "/"},
          Row{"/a b/", "/a b"}, Row{"/a/../b//", "/a/../b"}}) {
        set(row.set);
        EXPECT_EQ(ZPKEnvironment::absolutePath(kVariable), row.path) << row.set.value_or("(unset)");
    }
}

TEST_F(ZPKEnvironmentTest, IsReadAtEachCall) {
    set("one");
    EXPECT_EQ(ZPKEnvironment::value(kVariable), "one");
    set("two");
    EXPECT_EQ(ZPKEnvironment::value(kVariable), "two");
}

std::vector<std::string> entries(char** environment) {
    std::vector<std::string> texts;
    for (char** entry = environment; *entry != nullptr; ++entry) {
        texts.emplace_back(*entry);
    }
    return texts;
}

TEST_F(ZPKEnvironmentTest, ChildrenFindWhatIsThereUntilSomethingIsKept) {
    set("one");
    EXPECT_EQ(ZPKEnvironment::ofChildren(), environ);
}

TEST_F(ZPKEnvironmentTest, WhatIsKeptStaysAsItWasAndWhereItWas) {
    set("one");
    const std::vector<std::string> before = entries(environ);
    ZPKEnvironment::keepForChildren();
    set("two");
    ::setenv("ZPK_ENVIRONMENT_TEST_TOO", "three", 1);
    ZPKEnvironment::remove([](std::string_view name) { return name == "PATH"; });
    EXPECT_EQ(entries(ZPKEnvironment::ofChildren()), before);
    EXPECT_EQ(ZPKEnvironment::value(kVariable), "two");
}

TEST_F(ZPKEnvironmentTest, RemovesEveryVariableOfTheNameAndNoOther) {
    char one[] = "A=1", two[] = "B=2", again[] = "A=", sign[] = "no sign", equals[] = "AA==", last[] = "A==";
    char* made[] = {one, two, again, sign, equals, last, nullptr};
    char** const real = std::exchange(environ, made);
    ZPKEnvironment::remove([](std::string_view name) { return name == "A" || name == "no sign"; });
    const std::vector<std::string> left = entries(environ);
    environ = real;
    EXPECT_EQ(left, (std::vector<std::string>{"B=2", "AA=="}));
}

}  // namespace
