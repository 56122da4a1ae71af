// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/Check/FindingList.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Tools/zpkpack/Check/CheckRules.h"

namespace zpk_packager {

namespace {

std::vector<std::string> lines(const FindingList& findings) {
    std::vector<std::string> lines;
    for (const Finding& finding : findings.findings()) {
        lines.push_back(finding.path + ":" + std::to_string(finding.place.line) + " " + finding.rule->name +
                        " " + finding.text);
    }
    return lines;
}

TEST(FindingListTest, SortsByPathAndPlace) {
    FindingList findings;
    findings.add("dollar", "b", "1", {10, 1});
    findings.add("dollar", "b", "2", {9, 2});
    findings.add("set-id", "b", "3", {9, 1});
    findings.add("dollar", "a", "4", {11, 1});
    findings.finish();
    EXPECT_EQ(lines(findings),
              (std::vector<std::string>{"a:11 dollar 4", "b:9 set-id 3", "b:9 dollar 2", "b:10 dollar 1"}));
}

TEST(FindingListTest, CountsErrorsAndWarnings) {
    FindingList findings;
    findings.add("dollar", "a", "");
    findings.add("identifier", "a", "");
    findings.add("identifier", "b", "");
    findings.finish();
    EXPECT_EQ(findings.errors(), 2U);
    EXPECT_EQ(findings.warnings(), 1U);
}

TEST(FindingListTest, KeepsSoManyOfACheckAndSaysHowManyMoreThereAre) {
    FindingList findings;
    for (std::size_t count = 0; count < FindingList::kMostOfACheck + 3; ++count) {
        EXPECT_EQ(findings.keepsAnother("dollar"), count <= FindingList::kMostOfACheck);
        findings.add("dollar", "a", "text", {count + 1, 1});
    }
    findings.finish();
    ASSERT_EQ(findings.findings().size(), FindingList::kMostOfACheck + 1);
    EXPECT_EQ(findings.findings().back().text, "text (and 2 more of this check)");
}

TEST(FindingListTest, AllowanceSilencesAllOfACheck) {
    FindingList findings;
    for (std::size_t count = 0; count < FindingList::kMostOfACheck + 3; ++count) {
        findings.add("dollar", "a", "text");
    }
    findings.allow("dollar", "Package.strings", {1, 1});
    findings.finish();
    EXPECT_TRUE(findings.findings().empty());
}

TEST(FindingListTest, AllowanceThatSilencesNothingIsReported) {
    FindingList findings;
    findings.add("dollar", "a", "text");
    findings.allow("dollar", "p", {1, 1});
    findings.allow("dollar", "p", {2, 1});
    findings.allow("set-id", "p", {3, 1});
    findings.allow("set-it", "p", {4, 1});
    findings.finish();
    EXPECT_EQ(lines(findings),
              (std::vector<std::string>{
                  "p:2 allow-unused \"allow dollar\" silences nothing",
                  "p:3 allow-unused \"allow set-id\" silences nothing",
                  "p:4 allow-unused \"allow set-it\" silences nothing: there is no check of this name; "
                  "\"set-id\" is near"}));
}

TEST(FindingListTest, TextsAreHarmlessAndBounded) {
    FindingList findings;
    findings.add("dollar", "a", "\x1b[2J" + std::string(1 << 20, 'x'));
    EXPECT_LT(findings.findings()[0].text.size(), 1100U);
    EXPECT_TRUE(findings.findings()[0].text.starts_with("\\x1b[2Jxxx"));
}

}  // namespace

}  // namespace zpk_packager
