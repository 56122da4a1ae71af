// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/Check/CheckRules.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <set>
#include <string>

#include "Tests/Support/TemporaryFolder.h"

namespace zpk_packager {

namespace {

TEST(CheckRulesTest, DocumentIsTheOneInTheRepository) {
    const std::string path = ZPK_CHECKS_DOCUMENT;
    if (std::getenv("ZPK_TEST_WRITE") != nullptr) {
        zpk_test::writeFile(path, CheckRules::document());
    }
    EXPECT_EQ(zpk_test::readFile(path), CheckRules::document()) << "ZPK_TEST_WRITE=1 writes it anew";
}

TEST(CheckRulesTest, EachCheckHasANameOfItsOwnAndTwoWholeSentences) {
    std::set<std::string> names;
    for (const CheckRule& rule : CheckRules::all()) {
        EXPECT_TRUE(names.insert(rule.name).second) << rule.name;
        for (const std::string text : {rule.reason, rule.remedy}) {
            EXPECT_TRUE(text.ends_with('.')) << rule.name;
            EXPECT_EQ(text.find('\n'), std::string::npos) << rule.name;
        }
        EXPECT_EQ(CheckRules::find(rule.name), &rule);
    }
}

TEST(CheckRulesTest, KnowsWhichNameWasMeant) {
    EXPECT_EQ(CheckRules::find("exec"), nullptr);
    EXPECT_EQ(CheckRules::nearestName("exec-mising"), "exec-missing");
    EXPECT_EQ(CheckRules::nearestName("something else"), "");
}

}  // namespace

}  // namespace zpk_packager
