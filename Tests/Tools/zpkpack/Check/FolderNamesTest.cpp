// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/Check/FolderNames.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <set>
#include <string>
#include <vector>

namespace zpk_packager {

namespace {

std::string alike(const std::vector<std::string>& names, std::size_t most = 100) {
    FolderNames folder(most);
    const auto visitAll = [&](const FolderNames::Taker& take) {
        std::for_each(names.begin(), names.end(), take);
    };
    visitAll([&](const std::string& name) { folder.add(name); });
    std::set<std::string> found;
    folder.findAlike(
        visitAll, [&](const std::string& one, const std::string& other, FolderNames::Likeness likeness) {
            found.insert(one + (likeness == FolderNames::Likeness::Case ? "~" : "=") + other + ";");
        });
    return std::accumulate(found.begin(), found.end(), std::string());
}

TEST(FolderNamesTest, FindsNamesThatSomeFileSystemsTakeForOne) {
    EXPECT_EQ(alike({"A", "a"}), "A~a;");
    EXPECT_EQ(alike({"b", "A", "B"}), "B~b;");
    EXPECT_EQ(alike({"\u00C4", "\u00E4"}), "\u00C4~\u00E4;");
    EXPECT_EQ(alike({"stra\u00DFe", "STRASSE"}), "STRASSE~stra\u00DFe;");
    EXPECT_EQ(alike({"e\u0301", "\u00E9"}), "e\u0301=\u00E9;");
    EXPECT_EQ(alike({"E\u0301", "\u00E9"}), "E\u0301~\u00E9;");
    EXPECT_EQ(alike({"A", "a", "\u00C5", "A\u030A", "\u00E5"}), "A~a;A\u030A=\u00C5;\u00C5~\u00E5;");
    EXPECT_EQ(alike({"\uFB01", "fi"}), "fi~\uFB01;");
}

TEST(FolderNamesTest, FindsNothingInNamesThatDiffer) {
    EXPECT_EQ(alike({}), "");
    EXPECT_EQ(alike({"a", "b", "ab", "\u00E4"}), "");
    EXPECT_EQ(alike({"\xFF", "\xFE", "\xC3"}), "");
}

TEST(FolderNamesTest, ComparesWithinOneFolder) {
    EXPECT_EQ(alike({"a/x", "A/x", "b/x", "b/X", "x"}), "b/X~b/x;");
    EXPECT_EQ(alike({"a", "a"}), "");
}

TEST(FolderNamesTest, FindsThemAmongMoreNamesThanAreKept) {
    std::vector<std::string> names;
    for (int number = 0; number < 500; ++number) {
        names.push_back("name" + std::to_string(number));
    }
    names.insert(names.end(), {"NAME17", "NAME250", "NAME499"});
    EXPECT_EQ(alike(names, 20), "NAME17~name17;NAME250~name250;NAME499~name499;");
}

}  // namespace

}  // namespace zpk_packager
