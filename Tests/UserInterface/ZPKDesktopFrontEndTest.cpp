// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>
#include <unistd.h>

#include <QApplication>
#include <QDialog>
#include <QFocusFrame>
#include <QLabel>
#include <QPlainTextEdit>
#include <algorithm>
#include <cmath>

#include "Tests/UserInterface/DesktopFixture.h"
#include "Tests/UserInterface/FrontEndContract.h"

namespace zpk_test {

std::unique_ptr<ZPKFrontEnd> makeDesktopFrontEnd() {
    return openDesktop();
}

INSTANTIATE_TEST_SUITE_P(Each, FrontEndContract,
                         ::testing::Values(FrontEndKind{"Desktop", &makeDesktopFrontEnd}));

/// Of two colours, as WCAG 2.2 has it.
double contrast(const QColor& one, const QColor& other) {
    const auto luminance = [](const QColor& colour) {
        const auto part = [](double value) {
            return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
        };
        return 0.2126 * part(colour.redF()) + 0.7152 * part(colour.greenF()) + 0.0722 * part(colour.blueF());
    };
    const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
    return (lighter + 0.05) / (darker + 0.05);
}

/// The ratios of Docs/Accessibility.md, of the colours that an alert shows.
TEST_F(DesktopFrontEnd, ColoursHaveTheContrastThatIsWrittenDown) {
    withAlert({"None is here:\n\n  One", "", "OK", ZPKAlertStyle::Critical}, [](QDialog* box) {
        const auto* list = box->findChild<QPlainTextEdit*>("textView");
        const auto* frame = box->findChild<QFocusFrame*>();
        auto* picture = box->findChild<QLabel*>("iconLabel");
        ASSERT_TRUE(list != nullptr && frame != nullptr && picture != nullptr);
        constexpr double kRounding = 0.051;
        const QColor window = box->palette().color(QPalette::Window);
        EXPECT_NEAR(contrast(picture->palette().color(QPalette::WindowText), window), 18.3, kRounding);
        EXPECT_NEAR(contrast(list->palette().color(QPalette::Text), list->palette().color(QPalette::Base)),
                    21.0, kRounding);
        EXPECT_NEAR(contrast(frame->palette().color(QPalette::WindowText), window), 3.2, kRounding);
        const QImage shown = picture->pixmap().toImage();
        const QColor disc = shown.pixelColor(shown.width() / 2, shown.height() * 27 / 32);
        const QColor dark(45, 45, 48);
        EXPECT_NEAR(contrast(disc, window), 3.7, kRounding);
        EXPECT_NEAR(contrast(disc, dark), 3.2, kRounding);
        EXPECT_NEAR(contrast(disc, shown.pixelColor(shown.width() / 2, shown.height() / 2)), 4.2, kRounding);
        box->close();
    });
}

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
