// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/Check/FolderNames.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace zpk_packager {

namespace {

std::string alike(const std::vector<std::string>& names) {
    std::string found;
    FolderNames::findAlike(names, [&](std::size_t one, std::size_t other, FolderNames::Likeness likeness) {
        found += names[one] + (likeness == FolderNames::Likeness::Case ? "~" : "=") + names[other] + ";";
    });
    return found;
}

TEST(FolderNamesTest, FindsNamesThatSomeFileSystemsTakeForOne) {
    EXPECT_EQ(alike({"A", "a"}), "A~a;");
    EXPECT_EQ(alike({"b", "A", "B"}), "b~B;");
    EXPECT_EQ(alike({"\u00C4", "\u00E4"}), "\u00C4~\u00E4;");
    EXPECT_EQ(alike({"stra\u00DFe", "STRASSE"}), "stra\u00DFe~STRASSE;");
    EXPECT_EQ(alike({"e\u0301", "\u00E9"}), "e\u0301=\u00E9;");
    EXPECT_EQ(alike({"E\u0301", "\u00E9"}), "E\u0301~\u00E9;");
    EXPECT_EQ(alike({"A", "a", "\u00C5", "A\u030A", "\u00E5"}), "A~a;\u00C5=A\u030A;A\u030A~\u00E5;");
}

TEST(FolderNamesTest, FindsNothingInNamesThatDiffer) {
    EXPECT_EQ(alike({}), "");
    EXPECT_EQ(alike({"a", "b", "ab", "\u00E4"}), "");
    EXPECT_EQ(alike({"\xFF", "\xFE", "\xC3"}), "");
    EXPECT_EQ(alike({"\uFB01", "fi"}), "\uFB01~fi;");
}

}  // namespace

}  // namespace zpk_packager
