// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QAccessible>
#include <QDialog>
#include <QProgressBar>
#include <QScreen>
#include <QTest>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>

#include "Tests/UserInterface/DesktopModule.h"
#include "Tests/UserInterface/DesktopWidgets.h"
#include "Tests/UserInterface/ScriptedDelegate.h"

namespace zpk_test {

/// Before the toolkit starts.
inline const int kOffscreen = ::setenv("QT_QPA_PLATFORM", "offscreen", 1);

inline std::string manyLines() {
    std::string text;
    for (int line = 0; line < 200; ++line) {
        text += "Product number " + std::to_string(line) + "\n";
    }
    return text;
}

inline QString accessibleName(QWidget* widget) {
    return QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name);
}

inline void expectOnScreen(const QWidget* window) {
    EXPECT_TRUE(window->screen()->availableGeometry().contains(window->frameGeometry()))
        << window->width() << "x" << window->height();
}

/// A desktop front end whose windows a test can look into.
class DesktopFrontEnd : public ::testing::Test {
protected:
    std::unique_ptr<ZPKFrontEnd> frontEnd = openDesktop();

    /// For one more run: each front end has one.
    void openAgain() {
        frontEnd = nullptr;
        frontEnd = openDesktop();
    }

    /// Runs `script` with the progress window on the screen.
    void withProgressWindow(const std::string& title,
                            const std::function<void(ZPKProgressWindow&, QProgressBar*)>& script) {
        runWith(*frontEnd, [&] {
            auto window = frontEnd->createProgressWindow();
            window->center();
            window->progressIndicator().setMinValue(0);
            window->progressIndicator().setMaxValue(100);
            window->setTitle(title);
            inNextLoop([&] {
                auto* bar = findVisible<QProgressBar>("progressIndicator");
                EXPECT_NE(bar, nullptr);
                if (bar != nullptr) {
                    script(*window, bar);
                }
                frontEnd->abortModal();
            });
            EXPECT_EQ(frontEnd->runModalForWindow(*window), ZPKModalResponseAbort);
            window->close();
            EXPECT_EQ(findVisible<QProgressBar>("progressIndicator"), nullptr);
        });
    }

    /// Runs the alert; `script` sees its box and must answer it.
    void withAlert(const ZPKAlert& alert, const std::function<void(QDialog*)>& script) {
        runWith(*frontEnd, [&] {
            bool seen = false;
            inNextLoop([&] {
                auto* box = findVisible<QDialog>("alert");
                ASSERT_NE(box, nullptr);
                seen = true;
                script(box);
            });
            frontEnd->runAlert(alert);
            EXPECT_TRUE(seen);
        });
    }
};

}  // namespace zpk_test
