// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QDialog>
#include <QLabel>
#include <QPlainTextEdit>
#include <QScreen>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextLayout>
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "Common/CLocalizerUtil.h"
#include "Common/CResourceBundle.h"
#include "Common/ZPKCoreStringDefine.h"
#include "InstallerCore/ZPKSoftwareListText.h"
#include "Tests/Support/CapturedStreams.h"
#include "Tests/Support/TemporaryFolder.h"
#include "Tests/UserInterface/DesktopModule.h"
#include "Tests/UserInterface/DesktopWidgets.h"
#include "Tests/UserInterface/ScriptedDelegate.h"
#include "UserInterface/ZPKCDSearchWindowController.h"
#include "UserInterface/ZPKProgressWindowController.h"
#include "UserInterface/ZPKRemovableVolumes.h"

// Every window in every language that is delivered, measured: nothing is cut, nothing lies over anything
// else, and nothing is off the screen.

using namespace varno_zpk;

namespace zpk_test {

constexpr int kScreenWidth = 800;
constexpr int kScreenHeight = 600;
constexpr int kUsualDotsPerInch = 96;
constexpr int kTitleBarHeight = 24;

class DesktopLayout : public ::testing::TestWithParam<int> {
protected:
    TemporaryFolder folder;
    std::unique_ptr<ZPKFrontEnd> frontEnd;
    ZPKRemovableVolumes volumes;
    int windows = 0;

    void SetUp() override {
        const auto number = [](int value) { return std::to_string(value); };
        writeFile(folder / "screen.json", R"({"screens":[{"name":"small","x":0,"y":0,"width":)" +
                                              number(kScreenWidth) + R"(,"height":)" + number(kScreenHeight) +
                                              R"(,"logicalBaseDpi":)" + number(kUsualDotsPerInch) +
                                              R"(,"logicalDpi":)" + number(GetParam()) + R"(,"dpr":1}]})");
        setenv("QT_QPA_PLATFORM", ("offscreen:configfile=" + (folder / "screen.json")).c_str(), 1);
        frontEnd = openDesktop();
        const QScreen* screen = QApplication::primaryScreen();
        const double scale = static_cast<double>(GetParam()) / kUsualDotsPerInch;
        ASSERT_EQ(screen->devicePixelRatio(), scale);
        ASSERT_EQ(screen->size(), QSize(qRound(kScreenWidth / scale), qRound(kScreenHeight / scale)));
        CResourceBundle::AddDefaultBundlePath((deliveredForms() + "/UILang").c_str());
    }

    static std::vector<std::string> products(int count) {
        std::vector<std::string> names;
        for (int number = 0; number < count; ++number) {
            names.push_back("Example Studio Professional Edition " + std::to_string(number));
        }
        return names;
    }

    /// What is in front of all others now.
    void measureWindow() {
        QApplication::processEvents();
        QWidget* window = QApplication::activeModalWidget();
        ASSERT_NE(window, nullptr);
        SCOPED_TRACE(window->objectName().toStdString());
        ++windows;
        const QRect screen = window->screen()->availableGeometry();
        EXPECT_TRUE(screen.contains(window->frameGeometry())) << window->width() << "x" << window->height();
        // A title bar, which nobody draws here, has its place beside it.
        EXPECT_LE(window->height() + kTitleBarHeight, screen.height());
        measurePictures(*window);
        std::vector<const QWidget*> parts;
        for (const QWidget* part : window->findChildren<QWidget*>()) {
            if (isRead(part)) {
                measurePart(*window, *part);
                parts.push_back(part);
            }
        }
        EXPECT_FALSE(parts.empty());
        expectApart(*window, parts);
    }

    void measureAlert(const char* text) { measureAlert(localized(text)); }

    void measureAlert(const std::string& text) {
        QTimer::singleShot(0, qApp, [&] {
            measureWindow();
            if (QWidget* window = QApplication::activeModalWidget()) {
                window->close();
            }
        });
        frontEnd->runAlert({text, "", localized(ZPKSTRING_OK), ZPKAlertStyle::Critical});
    }

    void measureProgress(const char* title) {
        ZPKProgressWindowController controller(*frontEnd);
        controller.setTitle(localized(title));
        controller.window()->makeKeyAndOrderFront();
        controller.window()->showElapsedTime(std::chrono::hours(100));
        measureWindow();
        controller.close();
    }

    void measureDiscWindow(int count) {
        ZPKCDSearchWindowController controller(*frontEnd, volumes, {}, products(count));
        controller.window()->makeKeyAndOrderFront();
        measureWindow();
        controller.window()->close();
    }

    /// As long as a package's name may be, in words and in one.
    void measureLongNames() {
        for (const std::string& name : {std::string("Example Suite – Professional Edition for Workgroups, "
                                                    "Schools and Other Places of Learning, Release 4"),
                                        std::string(100, 'W')}) {
            SCOPED_TRACE(name);
            frontEnd->setDisplayName(name);
            measureProgress(ZPKSTRING_FILE_EXTRACT);
            measureDiscWindow(60);
        }
        frontEnd->setDisplayName("Zephyrkit");
    }

    void measureLanguage(const std::string& code) {
        SCOPED_TRACE(code);
        frontEnd->setInterfaceLanguage(code);
        CResourceBundle::SetCurrentLanguage(code.c_str());
        measureProgress(ZPKSTRING_FILE_EXTRACT);
        measureProgress(ZPKSTRING_DISCCHECK_SERACHING);
        for (const int count : {0, 1, 4, 60}) {
            measureDiscWindow(count);
            measureAlert(ZPKSoftwareListText(localized(ZPKSTRING_UPDATE_FAILURE), products(count)));
        }
        measureAlert(ZPKSTRING_UPDATE_INVALID_DISC);
        measureAlert(ZPKSTRING_TEMPFOLDERCREATEFAILURE);
        measureAlert(ZPKSTRING_ERROR_INIT);
        measureLongNames();
    }

private:
    static bool isRead(const QWidget* part) {
        const auto* label = qobject_cast<const QLabel*>(part);
        return part->isVisible() && ((label != nullptr && !label->text().isEmpty()) ||
                                     qobject_cast<const QAbstractButton*>(part) != nullptr ||
                                     qobject_cast<const QPlainTextEdit*>(part) != nullptr);
    }

    static QRect placeOf(const QWidget& window, const QWidget& part) {
        return {part.mapTo(&window, QPoint()), part.size()};
    }

    /// One made for a screen of fewer points would look coarse.
    static void measurePictures(const QWidget& window) {
        for (const QLabel* label : window.findChildren<QLabel*>()) {
            if (label->isVisible() && !label->pixmap().isNull()) {
                EXPECT_EQ(label->pixmap().devicePixelRatio(), window.devicePixelRatioF())
                    << label->objectName().toStdString();
            }
        }
    }

    /// Its lines and no empty one, but for what makes three of fewer; or a scroll bar.
    static void measureLines(const QPlainTextEdit& view) {
        qreal height = 2 * view.document()->documentMargin();
        int lines = 0;
        for (QTextBlock block = view.document()->begin(); block.isValid(); block = block.next()) {
            height += block.layout()->boundingRect().height();
            lines += block.layout()->lineCount();
        }
        const int shown = view.viewport()->height();
        if (view.verticalScrollBar()->isVisible()) {
            EXPECT_GT(lines, 3);
        } else {
            EXPECT_GE(shown, height);
            EXPECT_LT(shown, height + view.fontMetrics().lineSpacing() * (lines < 3 ? 3 : 1));
        }
    }

    static void measurePart(const QWidget& window, const QWidget& part) {
        SCOPED_TRACE(part.objectName().toStdString());
        EXPECT_TRUE(window.rect().contains(placeOf(window, part)));
        if (const auto* label = qobject_cast<const QLabel*>(&part)) {
            EXPECT_GE(label->height(), label->heightForWidth(label->width()));
            EXPECT_GE(label->width(), label->minimumSizeHint().width());
        } else if (const auto* view = qobject_cast<const QPlainTextEdit*>(&part)) {
            EXPECT_GE(view->viewport()->height(), 2 * view->fontMetrics().lineSpacing());
            EXPECT_EQ(view->horizontalScrollBar()->maximum(), 0);
            measureLines(*view);
        } else {
            EXPECT_GE(part.width(), part.sizeHint().width());
            EXPECT_GE(part.height(), part.sizeHint().height());
        }
    }

    static void expectApart(const QWidget& window, const std::vector<const QWidget*>& parts) {
        for (const QWidget* part : parts) {
            for (const QWidget* other : parts) {
                if (part != other && !part->isAncestorOf(other) && !other->isAncestorOf(part)) {
                    EXPECT_FALSE(placeOf(window, *part).intersects(placeOf(window, *other)))
                        << part->objectName().toStdString() << " and " << other->objectName().toStdString();
                }
            }
        }
    }
};

TEST_P(DesktopLayout, NothingIsCutOrOverlapsOrLeavesTheScreenInAnyLanguage) {
    const std::vector<std::string> codes = {"en", "ja",    "zh_CN", "zh_TW", "ko", "de", "fr", "es",
                                            "it", "pt_BR", "nl",    "pl",    "ru", "tr", "ar", "he"};
    std::vector<std::string> messages;
    // The look-ups tell what they find.
    const CapturedStreams streams = captureStreams([&] {
        runWith(*frontEnd, [&] {
            for (const std::string& code : codes) {
                measureLanguage(code);
                messages.push_back(localized(ZPKSTRING_DISCCHECK_MESSAGE));
            }
        });
    });
    if (HasFailure()) {
        std::cout << streams.standardOutput;
    }
    EXPECT_EQ(std::set<std::string>(messages.begin(), messages.end()).size(), codes.size());
    EXPECT_EQ(windows, static_cast<int>(codes.size()) * 17);
}

INSTANTIATE_TEST_SUITE_P(DotsPerInch, DesktopLayout, ::testing::Values(96, 144, 192));

}  // namespace zpk_test
