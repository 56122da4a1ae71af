// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>
#include <unistd.h>

#include <QLabel>
#include <QProcess>
#include <QProgressBar>
#include <QTest>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <ostream>
#include <string>

#include "Tests/UserInterface/DesktopModule.h"
#include "Tests/UserInterface/DesktopWidgets.h"
#include "Tests/UserInterface/ScriptedDelegate.h"

// The desktop's settings on a session bus, which the program starts for itself. A process asks for them once,
// so that each test has one of its own.

namespace zpk_test {

constexpr int kLongestWait = 60'000;

struct Setting {
    const char* name;
    const char* group;
    const char* key;
    const char* value;
    bool isStill;
};

void PrintTo(const Setting& setting, std::ostream* out) {
    *out << setting.name;
}

class DesktopMotion : public ::testing::TestWithParam<Setting> {};

TEST_P(DesktopMotion, MarkStandsStillWhereThePersonAsksForIt) {
    const std::unique_ptr<ZPKFrontEnd> frontEnd = openDesktop();
    QProcess portal;
    portal.start(ZPK_TEST_SETTINGS_PORTAL, {GetParam().group, GetParam().key, GetParam().value});
    while (!portal.canReadLine()) {
        ASSERT_TRUE(portal.waitForReadyRead(kLongestWait));
    }
    ASSERT_EQ(portal.readLine(), "ready\n");
    runWith(*frontEnd, [&] {
        auto window = frontEnd->createProgressWindow();
        window->setTitle("Unpacking");
        inNextLoop([&] {
            EXPECT_TRUE(QTest::qWaitFor([&] { return portal.readAll().contains("asked"); }, kLongestWait));
            auto* bar = findVisible<QProgressBar>("progressIndicator");
            auto* time = bar->window()->findChild<QLabel*>("elapsedLabel");
            EXPECT_TRUE(QTest::qWaitFor([&] { return time->isVisible(); }, kLongestWait));
            const QRect mark(0, bar->geometry().bottom() + 1, time->x(), bar->window()->height());
            const QImage first = bar->window()->grab(mark).toImage();
            int changes = 0;
            const QString last = time->text();
            // For a whole second: the mark turns ten times in one.
            EXPECT_TRUE(QTest::qWaitFor(
                [&] {
                    changes += bar->window()->grab(mark).toImage() != first ? 1 : 0;
                    return time->text() != last;
                },
                kLongestWait));
            EXPECT_EQ(changes == 0, GetParam().isStill);
            frontEnd->abortModal();
        });
        frontEnd->runModalForWindow(*window);
    });
    portal.kill();
    portal.waitForFinished();
}

INSTANTIATE_TEST_SUITE_P(
    Setting, DesktopMotion,
    ::testing::Values(Setting{"Common", "org.freedesktop.appearance", "reduced-motion", "uint32 1", true},
                      Setting{"Gnome", "org.gnome.desktop.interface", "enable-animations", "false", true},
                      Setting{"Kde", "org.kde.kdeglobals.KDE", "AnimationDurationFactor", "'0'", true},
                      Setting{"GnomeUsual", "org.gnome.desktop.interface", "enable-animations", "true",
                              false},
                      Setting{"Another", "org.gnome.desktop.interface", "clock", "false", false}),
    [](const auto& test) { return std::string(test.param.name); });

}  // namespace zpk_test

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    if (std::getenv("ZPK_TEST_DISPLAY_STARTED") == nullptr && !::testing::GTEST_FLAG(list_tests)) {
        setenv("ZPK_TEST_DISPLAY_STARTED", "1", 1);
        setenv("QT_QPA_PLATFORM", "offscreen", 1);
        const std::string filter = "--gtest_filter=" + ::testing::GTEST_FLAG(filter);
        execl(ZPK_TEST_RUN_UNDER_XVFB, ZPK_TEST_RUN_UNDER_XVFB, argv[0], filter.c_str(), nullptr);
        std::perror(ZPK_TEST_RUN_UNDER_XVFB);
        return 2;
    }
    return RUN_ALL_TESTS();
}
