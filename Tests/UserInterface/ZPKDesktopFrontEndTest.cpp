// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QAccessible>
#include <QAction>
#include <QDialog>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QScreen>
#include <QTest>
#include <filesystem>

#include "Tests/Support/CapturedStreams.h"
#include "Tests/Support/TemporaryFolder.h"
#include "Tests/UserInterface/DesktopModule.h"
#include "Tests/UserInterface/DesktopWidgets.h"
#include "Tests/UserInterface/FrontEndContract.h"

namespace zpk_test {

namespace {

[[maybe_unused]] const int kOffscreen = setenv("QT_QPA_PLATFORM", "offscreen", 1);

std::unique_ptr<ZPKFrontEnd> makeDesktopFrontEnd() {
    return openDesktop();
}

std::string manyLines() {
    std::string text;
    for (int line = 0; line < 200; ++line) {
        text += "Product number " + std::to_string(line) + "\n";
    }
    return text;
}

QString accessibleName(QWidget* widget) {
    return QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name);
}

void expectOnScreen(const QWidget* window) {
    EXPECT_TRUE(window->screen()->availableGeometry().contains(window->frameGeometry()))
        << window->width() << "x" << window->height();
}

}  // namespace

INSTANTIATE_TEST_SUITE_P(Each, FrontEndContract,
                         ::testing::Values(FrontEndKind{"Desktop", &makeDesktopFrontEnd}));

class DesktopFrontEnd : public ::testing::Test {
protected:
    std::unique_ptr<ZPKFrontEnd> frontEnd = openDesktop();

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
    void withAlert(const ZPKAlert& alert, const std::function<void(QMessageBox*)>& script) {
        runWith(*frontEnd, [&] {
            bool seen = false;
            inNextLoop([&] {
                auto* box = findVisible<QMessageBox>("");
                ASSERT_NE(box, nullptr);
                seen = true;
                script(box);
            });
            frontEnd->runAlert(alert);
            EXPECT_TRUE(seen);
        });
    }
};

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

class DesktopDiscWindow : public DesktopFrontEnd {
protected:
    int searches = 0;
    int cancels = 0;
    int closes = 0;
    bool mayClose = true;
    QDialog* dialog = nullptr;
    QPushButton* search = nullptr;
    QPushButton* cancel = nullptr;
    QPlainTextEdit* list = nullptr;
    std::unique_ptr<ZPKCDSearchWindow> window;

    /// Runs the window's modal loop, with `script` when it is on the screen; gives its code.
    int run(const std::function<void()>& script) {
        int code = 0;
        runWith(*frontEnd, [&] {
            setMenuTitles();
            window = frontEnd->createCDSearchWindow();
            ASSERT_NE(window, nullptr);
            fill();
            inNextLoop([&] {
                search = findVisible<QPushButton>("searchButton");
                cancel = findVisible<QPushButton>("cancelButton");
                list = findVisible<QPlainTextEdit>("textView");
                ASSERT_TRUE(search != nullptr && cancel != nullptr && list != nullptr);
                dialog = qobject_cast<QDialog*>(search->window());
                script();
                frontEnd->abortModal();
            });
            code = frontEnd->runModalForWindow(*window);
            window.reset();
        });
        return code;
    }

    QAction* item(const char* name) const {
        const QList<QAction*> actions = dialog->findChild<QMenuBar*>()->actions();
        for (QAction* action : actions.front()->menu()->actions()) {
            if (action->objectName() == QLatin1String(name)) {
                return action;
            }
        }
        ADD_FAILURE() << "no item " << name;
        return actions.front();
    }

private:
    void setMenuTitles() {
        const char* titles[] = {"Info & more", "Prefs", "Services", "Hide", "Others", "All", "Quit"};
        for (int at = 0; at < 7; ++at) {
            frontEnd->setMenuItemTitle(static_cast<ZPKMenuItem>(at), titles[at]);
        }
    }

    void fill() {
        window->center();
        window->setTitle("Disc");
        window->setMessage("Insert <b>the</b> disc & search.");
        window->setProductList("Suite <i>3</i>\nTools");
        window->setSearchButtonTitle("Search & Find");
        window->setCancelButtonTitle("Cancel");
        window->setActions({[&] { ++searches; },
                            [&] {
                                ++cancels;
                                frontEnd->stopModal(ZPKModalResponseAbort);
                                window->close();
                            },
                            [&] {
                                ++closes;
                                return mayClose;
                            }});
    }
};

TEST_F(DesktopDiscWindow, ShowsItsTextsAsTheyStand) {
    run([&] {
        auto* message = dialog->findChild<QLabel*>("textField");
        EXPECT_EQ(dialog->windowTitle(), "Disc");
        EXPECT_EQ(message->text(), "Insert <b>the</b> disc & search.");
        EXPECT_EQ(message->textFormat(), Qt::PlainText);
        EXPECT_TRUE(message->wordWrap());
        EXPECT_EQ(list->toPlainText(), "Suite <i>3</i>\nTools");
        EXPECT_TRUE(list->isReadOnly());
        EXPECT_EQ(search->text(), "Search && Find");
        EXPECT_EQ(cancel->text(), "Cancel");
        EXPECT_EQ(accessibleName(search), "Search & Find");
        EXPECT_EQ(accessibleName(list), "Insert <b>the</b> disc & search.");
        EXPECT_EQ(accessibleName(dialog), "Disc");
        EXPECT_EQ(dialog->windowModality(), Qt::ApplicationModal);
    });
}

TEST_F(DesktopDiscWindow, ButtonsDoTheirActions) {
    EXPECT_EQ(run([&] {
                  search->click();
                  search->click();
                  EXPECT_TRUE(dialog->isVisible());
                  cancel->click();
                  EXPECT_FALSE(dialog->isVisible());
              }),
              ZPKModalResponseAbort);
    EXPECT_EQ(searches, 2);
    EXPECT_EQ(cancels, 1);
    EXPECT_EQ(closes, 0);
}

TEST_F(DesktopDiscWindow, ReturnSearchesFromAnywhereButTheCancelButton) {
    run([&] {
        EXPECT_TRUE(search->isDefault());
        QTest::keyClick(search, Qt::Key_Return);
        list->setFocus();
        QTest::keyClick(list, Qt::Key_Return);
        QTest::keyClick(list, Qt::Key_Enter);
    });
    EXPECT_EQ(searches, 3);
}

TEST_F(DesktopDiscWindow, EscapePressesCancelFromAnywhere) {
    run([&] { QTest::keyClick(list, Qt::Key_Escape); });
    EXPECT_EQ(cancels, 1);
    EXPECT_EQ(closes, 0);
}

TEST_F(DesktopDiscWindow, CloseBoxAsksAndCloses) {
    run([&] {
        dialog->close();
        EXPECT_FALSE(dialog->isVisible());
    });
    EXPECT_EQ(closes, 1);
    EXPECT_EQ(cancels, 0);
}

TEST_F(DesktopDiscWindow, CloseBoxLeavesTheWindowThatMayNotClose) {
    mayClose = false;
    run([&] {
        dialog->close();
        EXPECT_TRUE(dialog->isVisible());
    });
    EXPECT_EQ(closes, 1);
}

TEST_F(DesktopDiscWindow, TabGoesFromSearchToCancelToTheList) {
    run([&] {
        EXPECT_TRUE(QTest::qWaitForWindowActive(dialog));
        EXPECT_EQ(QApplication::focusWidget(), search);
        QTest::keyClick(search, Qt::Key_Tab);
        EXPECT_EQ(QApplication::focusWidget(), cancel);
        QTest::keyClick(cancel, Qt::Key_Tab);
        EXPECT_EQ(QApplication::focusWidget(), list);
        QTest::keyClick(list, Qt::Key_Tab);
        EXPECT_EQ(QApplication::focusWidget(), search);
    });
}

TEST_F(DesktopDiscWindow, MenuHasTheSevenItemsInOrder) {
    run([&] {
        const QList<QAction*> bar = dialog->findChild<QMenuBar*>()->actions();
        ASSERT_EQ(bar.size(), 1);
        EXPECT_EQ(bar.front()->text(), "Zephyrkit");
        std::vector<std::pair<QString, bool>> items;
        for (const QAction* action : bar.front()->menu()->actions()) {
            if (!action->isSeparator()) {
                items.emplace_back(action->text(), action->isEnabled());
            }
        }
        const std::vector<std::pair<QString, bool>> expected = {
            {"Info && more", true}, {"Prefs", false}, {"Services", false}, {"Hide", true},
            {"Others", false},      {"All", false},   {"Quit", true},
        };
        EXPECT_EQ(items, expected);
    });
}

TEST_F(DesktopDiscWindow, QuitCountsAsTheCloseBox) {
    run([&] {
        item("quitAppMenuItem")->trigger();
        EXPECT_FALSE(dialog->isVisible());
    });
    EXPECT_EQ(closes, 1);
}

TEST_F(DesktopDiscWindow, HideMinimizesAndAboutTellsTheName) {
    run([&] {
        QTimer::singleShot(10, qApp, [] {
            auto* box = findVisible<QMessageBox>("");
            ASSERT_NE(box, nullptr);
            EXPECT_EQ(box->windowTitle(), "Info & more");
            EXPECT_EQ(box->text(), "Zephyrkit");
            box->close();
        });
        item("aboutAppMenuItem")->trigger();
        item("hideAppMenuItem")->trigger();
        EXPECT_TRUE(dialog->isMinimized());
    });
}

TEST_F(DesktopDiscWindow, FontIsSetAtThePresentSizeAndOnlyWhenItExists) {
    run([&] {
        const QFont before = search->font();
        for (const char* name : {"", "No such font at all"}) {
            window->setFontName(ZPKCDSearchControl::SearchButton, name);
            EXPECT_EQ(search->font(), before) << name;
        }
        window->setFontName(ZPKCDSearchControl::SearchButton, "DejaVu Sans Mono");
        EXPECT_EQ(search->font().families(), QStringList("DejaVu Sans Mono"));
        EXPECT_EQ(search->font().pointSizeF(), before.pointSizeF());
        EXPECT_EQ(cancel->font(), before);
        window->setFontName(ZPKCDSearchControl::CancelButton, "DejaVu Sans Mono");
        window->setFontName(ZPKCDSearchControl::TextView, "DejaVu Sans Mono");
        window->setFontName(ZPKCDSearchControl::TextField, "DejaVu Sans Mono");
        EXPECT_EQ(cancel->font().families(), QStringList("DejaVu Sans Mono"));
        EXPECT_EQ(list->font().families(), QStringList("DejaVu Sans Mono"));
        EXPECT_EQ(dialog->findChild<QLabel*>("textField")->font().families(),
                  QStringList("DejaVu Sans Mono"));
    });
}

TEST_F(DesktopDiscWindow, LongTextsStayOnTheScreen) {
    run([&] {
        window->close();
        window->setMessage(manyLines());
        window->setProductList(manyLines() + std::string(5000, 'x'));
        window->setSearchButtonTitle("A title that is rather long for a button to search with");
        window->makeKeyAndOrderFront();
        expectOnScreen(dialog);
        EXPECT_GE(search->width(), search->sizeHint().width());
        EXPECT_TRUE(dialog->rect().contains(search->geometry().center()));
        EXPECT_GT(list->height(), 40);
    });
}

TEST_F(DesktopDiscWindow, RightToLeftLanguageMirrorsIt) {
    frontEnd->setInterfaceLanguage("he");
    run([&] {
        EXPECT_GT(search->x(), cancel->x());
        EXPECT_EQ(list->document()->defaultTextOption().alignment(), Qt::AlignRight | Qt::AlignAbsolute);
    });
}

TEST_F(DesktopDiscWindow, ProgressAndAlertOverItTakeTheKeyboardAndGiveItBack) {
    run([&] {
        auto progress = frontEnd->createProgressWindow();
        progress->makeKeyAndOrderFront();
        auto session = frontEnd->beginModalSessionForWindow(*progress);
        session->run();
        QWidget* progressWidget = findVisible<QProgressBar>("progressIndicator")->window();
        EXPECT_EQ(QApplication::activeModalWidget(), progressWidget);
        EXPECT_EQ(progressWidget->windowHandle()->transientParent(), dialog->windowHandle());
        session.reset();
        progress->close();
        progress.reset();
        EXPECT_EQ(QApplication::activeModalWidget(), dialog);
        inNextLoop([&] {
            auto* box = findVisible<QMessageBox>("");
            EXPECT_EQ(box->parentWidget(), dialog);
            box->close();
        });
        frontEnd->runAlert({"No disc", "", "OK"});
        EXPECT_EQ(QApplication::activeModalWidget(), dialog);
    });
}

TEST_F(DesktopDiscWindow, ToolkitThatIsToldToQuitEndsTheSessionOverItAndTheRun) {
    const int code = run([&] {
        auto progress = frontEnd->createProgressWindow();
        auto session = frontEnd->beginModalSessionForWindow(*progress);
        EXPECT_TRUE(session->run());
        QCoreApplication::exit();
        EXPECT_FALSE(session->run());
        // A search that found the disc in this moment changes nothing.
        frontEnd->stopModal(ZPKModalResponseStop);
    });
    EXPECT_EQ(code, ZPKModalResponseAbort);
    EXPECT_EQ(frontEnd->runModalForWindow(*frontEnd->createProgressWindow()), ZPKModalResponseAbort);
}

/// A copy of the delivered forms with one of them damaged.
class DesktopForms : public ::testing::Test {
protected:
    TemporaryFolder folder;

    struct Outcome {
        int status = 0;
        std::string errors;
        std::size_t messages = 0;
    };

    Outcome runWith(const std::string& form, const std::function<void(const std::string& path)>& damage,
                    const std::function<void(ZPKFrontEnd&)>& use) {
        for (const char* name : {"MainMenu.ui", "ProgressWindow.ui", "CDSearchWindow.ui"}) {
            std::filesystem::remove_all(folder / name);
            writeFile(folder / name, readFile(deliveredForms() + "/" + name));
        }
        damage(folder / form);
        ZPKDesktopParameters parameters = desktopParameters();
        parameters.resourceFolder = folder.path();
        Outcome outcome;
        ScriptedDelegate delegate;
        outcome.errors = captureStreams([&] {
                             const std::unique_ptr<ZPKFrontEnd> frontEnd = openDesktop(parameters);
                             delegate.onDidFinish = [&] {
                                 use(*frontEnd);
                                 frontEnd->terminate();
                             };
                             outcome.status = frontEnd->run(delegate);
                         }).standardError;
        outcome.messages = delegate.messages.size();
        return outcome;
    }

    /// One line that begins with the path.
    void expectOneLine(const std::string& errors, const std::string& form) {
        EXPECT_EQ(errors.find("Cannot load the form " + folder / form + ": "), 0U) << errors;
        EXPECT_EQ(errors.find('\n'), errors.size() - 1) << errors;
    }

    static std::vector<std::pair<const char*, std::function<void(const std::string&)>>> damages() {
        const auto replaced = [](const std::string& path, const std::string& contents) {
            writeFile(path, contents);
        };
        return {
            {"missing", [](const std::string& path) { std::filesystem::remove(path); }},
            {"folder",
             [](const std::string& path) {
                 std::filesystem::remove(path);
                 std::filesystem::create_directory(path);
             }},
            {"empty", [=](const std::string& path) { replaced(path, ""); }},
            {"no XML", [=](const std::string& path) { replaced(path, std::string(1000, '\xff')); }},
            {"no form", [=](const std::string& path) { replaced(path, "<a><b/></a>"); }},
            {"no window", [=](const std::string& path) { replaced(path, "<ui version=\"4.0\"></ui>"); }},
            {"cut",
             [=](const std::string& path) {
                 const std::string whole = readFile(path);
                 replaced(path, whole.substr(0, whole.size() / 2));
             }},
            {"another window",
             [=](const std::string& path) {
                 replaced(path,
                          "<ui version=\"4.0\"><widget class=\"QLabel\" name=\"x\">"
                          "<property name=\"nonsense\"><number>1</number></property></widget></ui>");
             }},
            {"unknown class",
             [=](const std::string& path) {
                 replaced(path, "<ui version=\"4.0\"><widget class=\"QNonsense\" name=\"x\"/></ui>");
             }},
        };
    }
};

TEST_F(DesktopForms, MainMenuThatCannotBeLoadedEndsTheRunBeforeItBegins) {
    for (const auto& [name, damage] : damages()) {
        SCOPED_TRACE(name);
        const Outcome outcome = runWith("MainMenu.ui", damage, [](ZPKFrontEnd&) { FAIL(); });
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.messages, 0U);
        expectOneLine(outcome.errors, "MainMenu.ui");
    }
}

TEST_F(DesktopForms, ProgressWindowThatCannotBeLoadedGivesNothingAndStatusOne) {
    for (const auto& [name, damage] : damages()) {
        SCOPED_TRACE(name);
        const Outcome outcome = runWith("ProgressWindow.ui", damage, [](ZPKFrontEnd& frontEnd) {
            EXPECT_EQ(frontEnd.createProgressWindow(), nullptr);
        });
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.messages, 3U);
        expectOneLine(outcome.errors, "ProgressWindow.ui");
    }
}

TEST_F(DesktopForms, DiscWindowThatCannotBeLoadedGivesNothingAndStatusOne) {
    for (const auto& [name, damage] : damages()) {
        SCOPED_TRACE(name);
        const Outcome outcome = runWith("CDSearchWindow.ui", damage, [](ZPKFrontEnd& frontEnd) {
            EXPECT_EQ(frontEnd.createCDSearchWindow(), nullptr);
        });
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.messages, 3U);
        expectOneLine(outcome.errors, "CDSearchWindow.ui");
    }
}

TEST_F(DesktopForms, EveryCutOfAFormIsSurvived) {
    const std::string whole = readFile(deliveredForms() + "/CDSearchWindow.ui");
    for (std::size_t length = 0; length < whole.size(); length += 97) {
        const Outcome outcome = runWith(
            "CDSearchWindow.ui", [&](const std::string& path) { writeFile(path, whole.substr(0, length)); },
            [](ZPKFrontEnd& frontEnd) { EXPECT_EQ(frontEnd.createCDSearchWindow(), nullptr); });
        expectOneLine(outcome.errors, "CDSearchWindow.ui");
    }
}

TEST_F(DesktopForms, WholeFormsSayNothing) {
    const Outcome outcome = runWith(
        "MainMenu.ui", [](const std::string&) {},
        [](ZPKFrontEnd& frontEnd) {
            EXPECT_NE(frontEnd.createProgressWindow(), nullptr);
            EXPECT_NE(frontEnd.createCDSearchWindow(), nullptr);
        });
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.errors, "");
}

}  // namespace zpk_test
