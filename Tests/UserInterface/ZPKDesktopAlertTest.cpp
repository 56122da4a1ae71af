// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include <QLabel>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QStyle>

#include "Tests/UserInterface/DesktopFixture.h"

namespace zpk_test {

class DesktopAlert : public DesktopFrontEnd {
protected:
    static std::vector<std::string> labels(const QDialog* box) {
        std::vector<std::string> texts;
        for (const QLabel* label : box->findChildren<QLabel*>()) {
            if (!label->text().isEmpty()) {
                texts.push_back(label->text().toStdString());
            }
        }
        return texts;
    }

    static QPushButton* button(const QDialog* box) {
        const auto buttons = box->findChildren<QPushButton*>();
        EXPECT_EQ(buttons.size(), 1);
        return buttons.front();
    }

    /// The lines of a list with the marks that keep each one's direction.
    static QString isolated(const QStringList& lines) {
        return QChar(0x2068) + lines.join(QString(QChar(0x2069)) + "\n" + QChar(0x2068)) + QChar(0x2069);
    }
};

TEST_F(DesktopAlert, ShowsItsTextsAsTheyStand) {
    const ZPKAlert alert{"Not <b>found</b> & gone", "More <i>text</i>", "OK & go"};
    withAlert(alert, [](QDialog* box) {
        EXPECT_EQ(box->windowTitle(), "Zephyrkit");
        EXPECT_EQ(labels(box), (std::vector<std::string>{"Not <b>found</b> & gone", "More <i>text</i>"}));
        for (const char* name : {"headingLabel", "textLabel"}) {
            auto* label = box->findChild<QLabel*>(name);
            ASSERT_NE(label, nullptr) << name;
            EXPECT_EQ(label->textFormat(), Qt::PlainText);
            EXPECT_TRUE(label->textInteractionFlags() & Qt::TextSelectableByMouse);
            EXPECT_TRUE(label->textInteractionFlags() & Qt::TextSelectableByKeyboard);
            EXPECT_EQ(label->font().bold(), QString(name) == "headingLabel");
        }
        EXPECT_EQ(box->windowModality(), Qt::ApplicationModal);
        EXPECT_EQ(button(box)->text(), "OK && go");
        EXPECT_TRUE(button(box)->isDefault());
        EXPECT_TRUE(QTest::qWaitForWindowActive(box));
        EXPECT_TRUE(button(box)->hasFocus());
        EXPECT_EQ(accessibleName(button(box)), "OK & go");
        button(box)->click();
    });
}

TEST_F(DesktopAlert, KeysSelectItsText) {
    withAlert({"Not found", "", "OK"}, [](QDialog* box) {
        auto* label = box->findChild<QLabel*>("headingLabel");
        ASSERT_NE(label, nullptr);
        EXPECT_EQ(label->selectedText(), "");
        QTest::keyClick(label, Qt::Key_A, Qt::ControlModifier);
        EXPECT_EQ(label->selectedText(), "Not found");
        QTest::keyClick(label, Qt::Key_Home);
        EXPECT_EQ(label->selectedText(), "");
        QTest::keyClick(label, Qt::Key_Right, Qt::ShiftModifier);
        EXPECT_EQ(label->selectedText(), "N");
        button(box)->click();
    });
}

TEST_F(DesktopAlert, FirstParagraphIsItsHeading) {
    withAlert({"Gone.\n\nLook again.\n\n\n\nThen ask.", "", "OK"}, [](QDialog* box) {
        EXPECT_EQ(labels(box), (std::vector<std::string>{"Gone.", "Look again.", "Then ask."}));
        box->close();
    });
}

TEST_F(DesktopAlert, PictureFollowsTheStyle) {
    const struct {
        ZPKAlertStyle style;
        QRgb colour;
    } rows[] = {{ZPKAlertStyle::Warning, qRgb(242, 161, 0)},
                {ZPKAlertStyle::Informational, qRgb(38, 110, 180)},
                {ZPKAlertStyle::Critical, qRgb(229, 57, 53)}};
    runWith(*frontEnd, [&] {
        for (const auto& row : rows) {
            inNextLoop([&] {
                auto* box = findVisible<QDialog>("alert");
                const QImage shown = box->findChild<QLabel*>("iconLabel")->pixmap().toImage();
                const int side = box->style()->pixelMetric(QStyle::PM_MessageBoxIconSize);
                EXPECT_EQ(shown.size(), QSize(side, side));
                EXPECT_EQ(qAlpha(shown.pixel(0, 0)), 0);
                EXPECT_EQ(shown.pixel(side / 2, side * 27 / 32), row.colour);
                EXPECT_NE(shown.pixel(side / 2, side / 2), row.colour) << "nothing but a colour";
                box->close();
            });
            frontEnd->runAlert({"T", "", "OK", row.style});
        }
    });
}

TEST_F(DesktopAlert, ReturnEscapeAndTheCloseBoxAnswerIt) {
    withAlert({"T", "", "OK"}, [](QDialog* box) { QTest::keyClick(box, Qt::Key_Return); });
    const auto again = [&](const std::function<void(QDialog*)>& script) {
        inNextLoop([&] { script(findVisible<QDialog>("alert")); });
        frontEnd->runAlert({"T", "", "OK"});
    };
    again([](QDialog* box) { QTest::keyClick(box, Qt::Key_Escape); });
    again([](QDialog* box) { box->close(); });
}

TEST_F(DesktopAlert, ListStandsInAFrameEachLineForItself) {
    const QString arabic = QString::fromUtf8("\u0643\u0627\u062a\u0628 3");
    const std::string text =
        "None is here:\n\n  A <b>1</b> & 2\n  " + arabic.toStdString() + "\n\nInstall one.";
    withAlert({text, "", "OK"}, [&](QDialog* box) {
        EXPECT_EQ(labels(box), (std::vector<std::string>{"None is here:", "Install one."}));
        auto* list = box->findChild<QPlainTextEdit*>("textView");
        ASSERT_NE(list, nullptr);
        EXPECT_EQ(list->toPlainText(), isolated({"A <b>1</b> & 2", arabic}));
        EXPECT_EQ(accessibleName(list), "None is here:");
        QApplication::processEvents();
        EXPECT_EQ(list->verticalScrollBar()->maximum(), 0);
        EXPECT_GT(list->frameWidth(), 0);
        EXPECT_TRUE(list->isReadOnly());
        EXPECT_TRUE(list->textInteractionFlags() & Qt::TextSelectableByKeyboard);
        box->close();
    });
}

TEST_F(DesktopAlert, ListAndButtonEndInALine) {
    for (const char* language : {"en", "ar"}) {
        openAgain();
        frontEnd->setInterfaceLanguage(language);
        withAlert({"None is here:\n\n  One\n\nInstall one.", "", "OK"}, [&](QDialog* box) {
            const QWidget* parts[] = {box->findChild<QPlainTextEdit*>("textView"), button(box)};
            const auto end = [&](const QWidget* part) {
                const QRect place(part->mapTo(box, QPoint()), part->size());
                return box->isRightToLeft() ? place.left() : place.right();
            };
            EXPECT_EQ(box->isRightToLeft(), std::string(language) == "ar");
            EXPECT_EQ(end(parts[0]), end(parts[1]));
            box->close();
        });
    }
}

TEST_F(DesktopAlert, SixtyNamesScrollAboveTheLastParagraph) {
    std::string text = "None is here:\n\n";
    for (int line = 0; line < 60; ++line) {
        text += "  Product number " + std::to_string(line) + (line < 59 ? "\n" : "\n\nInstall one.");
    }
    withAlert({text, "", "OK"}, [](QDialog* box) {
        EXPECT_EQ(labels(box), (std::vector<std::string>{"None is here:", "Install one."}));
        auto* list = box->findChild<QPlainTextEdit*>("textView");
        ASSERT_NE(list, nullptr);
        EXPECT_TRUE(list->verticalScrollBar()->isVisible());
        EXPECT_LT(list->height(), 14 * list->fontMetrics().lineSpacing());
        EXPECT_TRUE(QTest::qWaitForWindowActive(box));
        QTest::keyClick(box, Qt::Key_Tab);
        EXPECT_TRUE(list->hasFocus());
        QTest::keyClick(list, Qt::Key_End, Qt::ControlModifier);
        EXPECT_EQ(list->verticalScrollBar()->value(), list->verticalScrollBar()->maximum());
        QTest::keyClick(list, Qt::Key_Return);
    });
}

TEST_F(DesktopAlert, NameWiderThanTheScreenIsFoldedAnywhere) {
    withAlert({"None is here:\n\n  " + std::string(5000, 'w') + "\n\nInstall one.", "", "OK"},
              [](QDialog* box) {
                  auto* list = box->findChild<QPlainTextEdit*>("textView");
                  ASSERT_NE(list, nullptr);
                  QApplication::processEvents();
                  EXPECT_EQ(list->horizontalScrollBar()->maximum(), 0);
                  EXPECT_GT(list->verticalScrollBar()->maximum(), 0);
                  expectOnScreen(box);
                  box->close();
              });
}

TEST_F(DesktopAlert, LongTextsStayOnTheScreen) {
    const std::string texts[] = {manyLines(), std::string(20000, 'x'), manyLines() + std::string(3000, 'y'),
                                 "One\n\n" + manyLines(), std::string(3000, 'z') + "\n\n" + manyLines()};
    runWith(*frontEnd, [&] {
        for (const std::string& text : texts) {
            inNextLoop([&] {
                auto* box = findVisible<QDialog>("alert");
                expectOnScreen(box);
                EXPECT_NE(box->findChild<QPlainTextEdit*>("textView"), nullptr);
                const QRect place(button(box)->mapTo(box, QPoint()), button(box)->size());
                EXPECT_TRUE(box->rect().contains(place));
                box->close();
            });
            frontEnd->runAlert({text, text, "OK"});
        }
    });
}

TEST_F(DesktopAlert, AbortWaitsForItsAnswer) {
    runWith(*frontEnd, [&] {
        auto window = frontEnd->createProgressWindow();
        bool answered = false;
        inNextLoop([&] {
            frontEnd->abortModal();
            QTimer::singleShot(30, qApp, [&] {
                answered = true;
                findVisible<QDialog>("alert")->close();
            });
            frontEnd->runAlert({"T", "", "OK"});
            EXPECT_TRUE(answered);
        });
        EXPECT_EQ(frontEnd->runModalForWindow(*window), ZPKModalResponseAbort);
    });
}

TEST_F(DesktopAlert, EndOfTheRunAnswersIt) {
    withAlert({"T", "", "OK"}, [&](QDialog* box) {
        frontEnd->terminate();
        EXPECT_FALSE(box->isVisible());
        box->close();
    });
}

/// The toolkit's own menus would have texts of the toolkit.
TEST_F(DesktopAlert, OtherMouseButtonBringsNoMenu) {
    withAlert({manyLines(), "More", "OK"}, [](QDialog* box) {
        for (QWidget* widget : box->findChildren<QWidget*>()) {
            askForMenu(widget);
            EXPECT_EQ(findVisible<QMenu>(""), nullptr) << widget->objectName().toStdString();
        }
        box->close();
    });
}

}  // namespace zpk_test
