// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "InstallerCore/ZPKSoftwareListText.h"

#include <gtest/gtest.h>

namespace {

using Lines = std::vector<std::string>;

TEST(SoftwareListTextTest, NamesAreIndentedAndJoined) {
    EXPECT_EQ(ZPKSoftwareListText("For:\n%s\n", {"A", "B %s", ""}), "For:\n  A\n  B %s\n  \n");
}

TEST(SoftwareListTextTest, EmptyList) {
    EXPECT_EQ(ZPKSoftwareListText("For: %s.", {}), "For: .");
}

TEST(SoftwareListTextTest, OddFormatsAreTextAndReadNothing) {
    const std::pair<const char*, const char*> rows[] = {
        {"", ""},          {"none", "none"},  {"%", "%"},          {"100 %", "100 %"},     {"%n%d", "%n%d"},
        {"%s%s", "  A%s"}, {"%%s", "%s"},     {"%1$s", "%1$s"},    {"%-5s", "%-5s"},       {"%%", "%"},
        {"%", "%"},        {"%s %", "  A %"}, {"%*s%s", "%*s  A"}, {"50%% %s", "50%   A"},
    };
    for (const auto& [format, expected] : rows) {
        EXPECT_EQ(ZPKSoftwareListText(format, {"A"}), expected) << format;
    }
}

}  // namespace
