// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include <QLabel>
#include <cstdlib>
#include <limits>

#include "Tests/UserInterface/DesktopFixture.h"

namespace zpk_test {

using DesktopProgressWindow = DesktopFrontEnd;

TEST_F(DesktopProgressWindow, ShowsItsTitleAndTheProductAndValue) {
    withProgressWindow("Unpacking <b>&</b>[*]", [](ZPKProgressWindow& window, QProgressBar* bar) {
        auto* heading = bar->window()->findChild<QLabel*>("headingLabel");
        EXPECT_EQ(bar->window()->windowTitle(), "Unpacking <b>&</b>[*][*]");
        EXPECT_EQ(heading->text(), "Zephyrkit");
        EXPECT_EQ(heading->textFormat(), Qt::PlainText);
        EXPECT_EQ(bar->value(), 0);
        window.progressIndicator().setDoubleValue(39.6);
        EXPECT_EQ(bar->value(), 40);
        EXPECT_EQ(bar->maximum(), 100);
        window.setTitle("Other");
        EXPECT_EQ(bar->window()->windowTitle(), "Other");
        EXPECT_EQ(accessibleName(bar), "Other");
    });
}

TEST_F(DesktopProgressWindow, BlankNameTakesNoRoom) {
    const auto top = [&](const char* name) {
        openAgain();
        frontEnd->setDisplayName(name);
        int found = 0;
        withProgressWindow("T", [&](ZPKProgressWindow&, QProgressBar* bar) {
            auto* heading = bar->window()->findChild<QLabel*>("headingLabel");
            EXPECT_EQ(heading->isVisible(), *name == 'A');
            // It stands beside the picture, which may be higher.
            bar->window()->findChild<QLabel*>("iconLabel")->hide();
            QApplication::processEvents();
            found = bar->y();
        });
        return found;
    };
    EXPECT_LT(top(" "), top("A name"));
}

/// The title bar shows the title.
TEST_F(DesktopProgressWindow, NoLabelSaysTheTitleAgain) {
    withProgressWindow("Unpacking", [](ZPKProgressWindow&, QProgressBar* bar) {
        for (const QLabel* label : bar->window()->findChildren<QLabel*>()) {
            EXPECT_NE(label->text(), "Unpacking");
        }
    });
}

TEST_F(DesktopProgressWindow, TellsTheTimeFromTheThirdSecondOnInTheDigitsOfTheLanguage) {
    const struct {
        const char* code;
        char16_t zero;
    } rows[] = {{"en", '0'}, {"ar", 0x0660}};
    for (const auto& row : rows) {
        openAgain();
        frontEnd->setInterfaceLanguage(row.code);
        withProgressWindow("T", [&](ZPKProgressWindow&, QProgressBar* bar) {
            auto* time = bar->window()->findChild<QLabel*>("elapsedLabel");
            const QSize before = bar->window()->size();
            EXPECT_FALSE(time->isVisible());
            EXPECT_TRUE(QTest::qWaitFor([&] { return time->isVisible(); }, 60000));
            EXPECT_EQ(time->text().size(), 4);
            EXPECT_EQ(time->text().at(0).unicode(), row.zero);
            EXPECT_GE(time->text().back().unicode(), row.zero + 3);
            EXPECT_EQ(bar->window()->size(), before);
        });
    }
}

TEST_F(DesktopProgressWindow, MarkTurnsWhileTheWorkGoesOn) {
    withProgressWindow("T", [](ZPKProgressWindow&, QProgressBar* bar) {
        QWidget* mark = nullptr;
        for (QWidget* child : bar->window()->findChildren<QWidget*>()) {
            if (child->y() > bar->geometry().bottom() && child->isVisible()) {
                mark = child;
            }
        }
        ASSERT_NE(mark, nullptr);
        const QImage first = mark->grab().toImage();
        EXPECT_TRUE(QTest::qWaitFor([&] { return mark->grab().toImage() != first; }, 60000));
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
        EXPECT_LE(std::abs(off.x()), 2);
        EXPECT_LE(std::abs(off.y()), 14) << "more than half a title bar off";
    });
}

TEST_F(DesktopProgressWindow, IsAsWideAsItsTitleAndStaysOnTheScreen) {
    withProgressWindow("T", [](ZPKProgressWindow& window, QProgressBar* bar) {
        const QSize before = bar->window()->size();
        const QString title = "Die Dateien werden entpackt. Dies kann je nach Umfang einige Minuten dauern";
        window.setTitle(title.toStdString());
        EXPECT_GT(bar->window()->width(), bar->fontMetrics().horizontalAdvance(title));
        EXPECT_EQ(bar->window()->height(), before.height());
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

/// Of the two points that differ most; half transparent ones are rounded when they are drawn again.
int difference(const QImage& one, const QImage& other) {
    EXPECT_EQ(one.size(), other.size());
    int most = 0;
    for (int y = 0; y < one.height(); ++y) {
        for (int x = 0; x < one.width(); ++x) {
            const QRgb a = one.pixel(x, y);
            const QRgb b = other.pixel(x, y);
            for (const int channel : {qRed(a) - qRed(b), qGreen(a) - qGreen(b), qBlue(a) - qBlue(b)}) {
                most = qMax(most, std::abs(channel));
            }
        }
    }
    return most;
}

TEST_F(DesktopProgressWindow, RightToLeftBarIsTheOthersMirrorImage) {
    const auto images = [&](const char* language) {
        openAgain();
        frontEnd->setInterfaceLanguage(language);
        std::vector<QImage> shown;
        withProgressWindow("T", [&](ZPKProgressWindow& window, QProgressBar* bar) {
            for (const double value : {0.0, 10.0, 40.0, 100.0}) {
                window.progressIndicator().setDoubleValue(value);
                shown.push_back(bar->grab().toImage());
            }
        });
        return shown;
    };
    const std::vector<QImage> fromLeft = images("en");
    const std::vector<QImage> fromRight = images("ar");
    ASSERT_EQ(fromLeft.size(), 4U);
    for (std::size_t at = 0; at < fromLeft.size(); ++at) {
        EXPECT_LE(difference(fromRight.at(at), fromLeft[at].mirrored(true, false)), 1) << at;
    }
    EXPECT_GT(difference(fromRight[1], fromLeft[1]), 1);
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
