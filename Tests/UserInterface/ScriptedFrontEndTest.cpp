// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tests/Support/ScriptedFrontEnd.h"

#include <gtest/gtest.h>

#include "Tests/UserInterface/FrontEndContract.h"

namespace zpk_test {

std::unique_ptr<ZPKFrontEnd> makeScriptedFrontEnd() {
    return std::make_unique<ScriptedFrontEnd>();
}

INSTANTIATE_TEST_SUITE_P(Each, FrontEndContract,
                         ::testing::Values(FrontEndKind{"Scripted", &makeScriptedFrontEnd}));

TEST(ScriptedFrontEnd, BrokenFormsGiveNothingAndStatusOne) {
    ScriptedFrontEnd frontEnd;
    frontEnd.formsAreBroken = true;
    const int status = runWith(frontEnd, [&] {
        EXPECT_EQ(frontEnd.createProgressWindow(), nullptr);
        EXPECT_EQ(frontEnd.createCDSearchWindow(), nullptr);
    });
    EXPECT_EQ(status, 1);
}

}  // namespace zpk_test
