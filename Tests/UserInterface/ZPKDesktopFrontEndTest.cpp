// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>
#include <unistd.h>

#include <QCoreApplication>

#include "Tests/UserInterface/DesktopFixture.h"
#include "Tests/UserInterface/FrontEndContract.h"

namespace zpk_test {

std::unique_ptr<ZPKFrontEnd> makeDesktopFrontEnd() {
    return openDesktop();
}

INSTANTIATE_TEST_SUITE_P(Each, FrontEndContract,
                         ::testing::Values(FrontEndKind{"Desktop", &makeDesktopFrontEnd}));

/// As at the end of the person's session. A run that does not notice goes on for ever.
TEST_F(DesktopFrontEnd, ToolkitThatIsToldToQuitInAModalLoopEndsTheRun) {
    ScriptedDelegate delegate;
    int code = ZPKModalResponseStop;
    delegate.onDidFinish = [&] {
        const auto window = frontEnd->createProgressWindow();
        inNextLoop([] { QCoreApplication::exit(); });
        code = frontEnd->runModalForWindow(*window);
    };
    constexpr unsigned kGenerousSeconds = 60;
    ::alarm(kGenerousSeconds);
    EXPECT_EQ(frontEnd->run(delegate), 0);
    ::alarm(0);
    EXPECT_EQ(code, ZPKModalResponseAbort);
}

}  // namespace zpk_test
