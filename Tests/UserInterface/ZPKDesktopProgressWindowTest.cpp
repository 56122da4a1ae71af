// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include <QLabel>
#include <limits>

#include "Tests/UserInterface/DesktopFixture.h"

namespace zpk_test {

using DesktopProgressWindow = DesktopFrontEnd;

TEST_F(DesktopProgressWindow, ShowsItsTitleAndValue) {
    withProgressWindow("Unpacking <b>&</b>[*]", [](ZPKProgressWindow& window, QProgressBar* bar) {
        auto* label = bar->window()->findChild<QLabel*>("titleLabel");
        EXPECT_EQ(bar->window()->windowTitle(), "Unpacking <b>&</b>[*][*]");
        EXPECT_EQ(label->text(), "Unpacking <b>&</b>[*]");
        EXPECT_EQ(label->textFormat(), Qt::PlainText);
        EXPECT_EQ(bar->value(), 0);
        window.progressIndicator().setDoubleValue(39.6);
        EXPECT_EQ(bar->value(), 40);
        EXPECT_EQ(bar->maximum(), 100);
        window.setTitle("Other");
        EXPECT_EQ(bar->window()->windowTitle(), "Other");
        EXPECT_EQ(label->text(), "Other");
    });
}

TEST_F(DesktopProgressWindow, CountsFromMinimumToMaximumAndStaysInside) {
    withProgressWindow("T", [](ZPKProgressWindow& window, QProgressBar* bar) {
        ZPKProgressIndicator& indicator = window.progressIndicator();
        indicator.setMinValue(50);
        indicator.setMaxValue(150);
        const struct {
            double value;
            int shown;
        } rows[] = {{75, 25}, {1e300, 100}, {-1e300, 0}, {std::numeric_limits<double>::quiet_NaN(), 0}};
        for (const auto& row : rows) {
            indicator.setDoubleValue(row.value);
            EXPECT_EQ(bar->value(), row.shown);
        }
        indicator.setMaxValue(50);
        indicator.setDoubleValue(50);
        EXPECT_EQ(bar->maximum(), 100) << "a range of nothing must not look like an endless bar";
    });
}

TEST_F(DesktopProgressWindow, IndeterminateBarIsEndlessWhileAnimated) {
    withProgressWindow("T", [](ZPKProgressWindow& window, QProgressBar* bar) {
        ZPKProgressIndicator& indicator = window.progressIndicator();
        indicator.setUsesThreadedAnimation(true);
        indicator.setIndeterminate(true);
        EXPECT_EQ(bar->maximum(), 100);
        indicator.startAnimation();
        EXPECT_EQ(bar->maximum(), 0);
        indicator.stopAnimation();
        EXPECT_EQ(bar->maximum(), 100);
        indicator.setIndeterminate(false);
        indicator.setDoubleValue(10);
        EXPECT_EQ(bar->value(), 10);
    });
}

TEST_F(DesktopProgressWindow, TellsAssistiveToolsItsTitleAndValue) {
    withProgressWindow("Unpacking", [](ZPKProgressWindow& window, QProgressBar* bar) {
        window.progressIndicator().setDoubleValue(40);
        EXPECT_EQ(accessibleName(bar), "Unpacking");
        EXPECT_EQ(accessibleName(bar->window()), "Unpacking");
        QAccessibleInterface* interface = QAccessible::queryAccessibleInterface(bar);
        EXPECT_EQ(interface->role(), QAccessible::ProgressBar);
        EXPECT_EQ(interface->valueInterface()->currentValue().toInt(), 40);
    });
}

TEST_F(DesktopProgressWindow, CannotBeClosedByThePerson) {
    withProgressWindow("T", [](ZPKProgressWindow&, QProgressBar* bar) {
        bar->window()->close();
        EXPECT_TRUE(bar->isVisible());
        QTest::keyClick(bar->window(), Qt::Key_Escape);
        EXPECT_TRUE(bar->isVisible());
    });
}

TEST_F(DesktopProgressWindow, IsModalAndCentredAndOfFixedSize) {
    withProgressWindow("T", [](ZPKProgressWindow&, QProgressBar* bar) {
        const QWidget* window = bar->window();
        EXPECT_EQ(window->windowModality(), Qt::ApplicationModal);
        EXPECT_EQ(window->minimumSize(), window->maximumSize());
        const QPoint off = window->geometry().center() - window->screen()->availableGeometry().center();
        EXPECT_LE(off.manhattanLength(), 10) << "more than a frame's width off";
    });
}

TEST_F(DesktopProgressWindow, LongTitleIsWrappedAndStaysOnTheScreen) {
    const std::string title = "Die Dateien werden entpackt. Dies kann je nach Umfang einige Minuten dauern";
    withProgressWindow(title, [](ZPKProgressWindow& window, QProgressBar* bar) {
        auto* label = bar->window()->findChild<QLabel*>("titleLabel");
        EXPECT_GE(label->height(), label->heightForWidth(label->width()));
        EXPECT_GT(label->height(), label->fontMetrics().height() * 3 / 2);
        window.setTitle(manyLines() + std::string(5000, 'x'));
        QTest::qWait(20);
        expectOnScreen(bar->window());
    });
}

TEST_F(DesktopProgressWindow, RightToLeftLanguageMirrorsIt) {
    const struct {
        const char* code;
        Qt::LayoutDirection direction;
    } rows[] = {{"ar", Qt::RightToLeft},      {"he", Qt::RightToLeft},      {"zh_CN", Qt::LeftToRight},
                {"en", Qt::LeftToRight},      {"zh-Hans", Qt::LeftToRight}, {"", Qt::LeftToRight},
                {"nonsense", Qt::LeftToRight}};
    for (const auto& row : rows) {
        frontEnd->setInterfaceLanguage(row.code);
        EXPECT_EQ(QGuiApplication::layoutDirection(), row.direction) << row.code;
    }
    frontEnd->setInterfaceLanguage("ar");
    withProgressWindow("T", [](ZPKProgressWindow&, QProgressBar* bar) {
        EXPECT_EQ(bar->layoutDirection(), Qt::RightToLeft);
    });
}

TEST_F(DesktopProgressWindow, WindowThatWasClosedShowsAgain) {
    withProgressWindow("T", [](ZPKProgressWindow& window, QProgressBar* bar) {
        window.close();
        EXPECT_FALSE(bar->isVisible());
        window.makeKeyAndOrderFront();
        EXPECT_TRUE(bar->isVisible());
        window.makeKeyAndOrderFront();
    });
}

}  // namespace zpk_test
