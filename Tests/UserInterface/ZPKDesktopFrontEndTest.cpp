// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "Tests/UserInterface/DesktopFixture.h"
#include "Tests/UserInterface/FrontEndContract.h"

namespace zpk_test {

std::unique_ptr<ZPKFrontEnd> makeDesktopFrontEnd() {
    return openDesktop();
}

INSTANTIATE_TEST_SUITE_P(Each, FrontEndContract,
                         ::testing::Values(FrontEndKind{"Desktop", &makeDesktopFrontEnd}));

}  // namespace zpk_test
