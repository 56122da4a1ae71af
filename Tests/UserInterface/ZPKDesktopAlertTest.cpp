// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include <QContextMenuEvent>
#include <QLabel>
#include <QMenu>
#include <QPushButton>

#include "Tests/UserInterface/DesktopFixture.h"

namespace zpk_test {

using DesktopAlert = DesktopFrontEnd;

TEST_F(DesktopAlert, ShowsItsTextsAsTheyStand) {
    const ZPKAlert alert{"Not <b>found</b> & gone", "More <i>text</i>", "OK & go"};
    withAlert(alert, [](QMessageBox* box) {
        EXPECT_EQ(box->windowTitle(), "Zephyrkit");
        EXPECT_EQ(box->text(), "Not <b>found</b> & gone");
        EXPECT_EQ(box->informativeText(), "More <i>text</i>");
        for (const char* name : {"qt_msgbox_label", "qt_msgbox_informativelabel"}) {
            auto* label = box->findChild<QLabel*>(name);
            ASSERT_NE(label, nullptr) << name;
            EXPECT_EQ(label->textFormat(), Qt::PlainText);
            EXPECT_TRUE(label->textInteractionFlags() & Qt::TextSelectableByMouse);
        }
        EXPECT_EQ(box->icon(), QMessageBox::Critical);
        EXPECT_EQ(box->windowModality(), Qt::ApplicationModal);
        ASSERT_EQ(box->buttons().size(), 1);
        EXPECT_EQ(box->buttons().front()->text(), "OK && go");
        EXPECT_EQ(box->defaultButton(), box->buttons().front());
        EXPECT_EQ(box->escapeButton(), box->buttons().front());
        EXPECT_TRUE(QTest::qWaitForWindowActive(box));
        EXPECT_TRUE(box->buttons().front()->hasFocus());
        EXPECT_EQ(accessibleName(box->buttons().front()), "OK & go");
        box->buttons().front()->click();
    });
}

TEST_F(DesktopAlert, KeysSelectItsText) {
    withAlert({"Not found", "", "OK"}, [](QMessageBox* box) {
        auto* label = box->findChild<QLabel*>("qt_msgbox_label");
        ASSERT_NE(label, nullptr);
        EXPECT_EQ(label->selectedText(), "");
        QTest::keyClick(label, Qt::Key_A, Qt::ControlModifier);
        EXPECT_EQ(label->selectedText(), "Not found");
        box->buttons().front()->click();
    });
}

TEST_F(DesktopAlert, IconFollowsTheStyle) {
    const struct {
        ZPKAlertStyle style;
        QMessageBox::Icon icon;
    } rows[] = {{ZPKAlertStyle::Warning, QMessageBox::Warning},
                {ZPKAlertStyle::Informational, QMessageBox::Information},
                {ZPKAlertStyle::Critical, QMessageBox::Critical}};
    runWith(*frontEnd, [&] {
        for (const auto& row : rows) {
            inNextLoop([&] {
                auto* box = findVisible<QMessageBox>("");
                EXPECT_EQ(box->icon(), row.icon);
                box->close();
            });
            frontEnd->runAlert({"T", "", "OK", row.style});
        }
    });
}

TEST_F(DesktopAlert, ReturnEscapeAndTheCloseBoxAnswerIt) {
    withAlert({"T", "", "OK"}, [](QMessageBox* box) { QTest::keyClick(box, Qt::Key_Return); });
    const auto again = [&](const std::function<void(QMessageBox*)>& script) {
        inNextLoop([&] { script(findVisible<QMessageBox>("")); });
        frontEnd->runAlert({"T", "", "OK"});
    };
    again([](QMessageBox* box) { QTest::keyClick(box, Qt::Key_Escape); });
    again([](QMessageBox* box) { box->close(); });
}

TEST_F(DesktopAlert, LongTextsStayOnTheScreen) {
    const std::string texts[] = {manyLines(), std::string(20000, 'x'), manyLines() + std::string(3000, 'y')};
    runWith(*frontEnd, [&] {
        for (const std::string& text : texts) {
            inNextLoop([&] {
                auto* box = findVisible<QMessageBox>("");
                expectOnScreen(box);
                EXPECT_EQ(box->text().toStdString(), text);
                EXPECT_TRUE(box->rect().contains(box->buttons().front()->geometry().center()));
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
                findVisible<QMessageBox>("")->close();
            });
            frontEnd->runAlert({"T", "", "OK"});
            EXPECT_TRUE(answered);
        });
        EXPECT_EQ(frontEnd->runModalForWindow(*window), ZPKModalResponseAbort);
    });
}

/// The toolkit's own menus would have texts of the toolkit.
TEST_F(DesktopAlert, OtherMouseButtonBringsNoMenu) {
    withAlert({manyLines(), "More", "OK"}, [](QMessageBox* box) {
        for (QWidget* widget : box->findChildren<QWidget*>()) {
            askForMenu(widget);
            EXPECT_EQ(findVisible<QMenu>(""), nullptr) << widget->objectName().toStdString();
        }
        box->close();
    });
}

}  // namespace zpk_test
