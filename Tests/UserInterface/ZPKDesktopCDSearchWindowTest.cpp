// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include <QAction>
#include <QDialog>
#include <QDialogButtonBox>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QPainter>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextLayout>

#include "Tests/UserInterface/DesktopFixture.h"

namespace zpk_test {

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
        bool ran = false;
        runWith(*frontEnd, [&] {
            ran = true;
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
        EXPECT_TRUE(ran);
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
        EXPECT_EQ(message->text(), "Insert <b>the</b> disc && search.");
        EXPECT_EQ(message->buddy(), list);
        EXPECT_EQ(accessibleName(message), "Insert <b>the</b> disc & search.");
        EXPECT_EQ(message->textFormat(), Qt::PlainText);
        EXPECT_TRUE(message->wordWrap());
        message->setSelection(0, static_cast<int>(message->text().remove("&&").size()) + 1);
        EXPECT_EQ(message->selectedText(), "Insert <b>the</b> disc & search.");
        const QString marked = list->toPlainText();
        EXPECT_EQ(marked, QString("\u2068Suite <i>3</i>\u2069\n\u2068Tools\u2069"));
        EXPECT_TRUE(list->isReadOnly());
        EXPECT_EQ(search->text(), "Search && Find");
        EXPECT_EQ(cancel->text(), "Cancel");
        EXPECT_EQ(accessibleName(search), "Search & Find");
        EXPECT_EQ(accessibleName(list), "Insert <b>the</b> disc & search.");
        EXPECT_EQ(accessibleName(dialog), "Disc");
        EXPECT_EQ(dialog->windowModality(), Qt::ApplicationModal);
    });
}

TEST_F(DesktopDiscWindow, HeadingAboveTheMessageNamesTheProduct) {
    for (const char* language : {"en", "he"}) {
        openAgain();
        frontEnd->setInterfaceLanguage(language);
        frontEnd->setDisplayName("A <b>Suite</b> & Tools");
        run([&] {
            auto* heading = dialog->findChild<QLabel*>("headingLabel");
            auto* message = dialog->findChild<QLabel*>("textField");
            EXPECT_TRUE(heading->isVisible());
            EXPECT_EQ(heading->text(), "A <b>Suite</b> & Tools");
            EXPECT_EQ(heading->textFormat(), Qt::PlainText);
            EXPECT_TRUE(heading->font().bold());
            EXPECT_FALSE(message->font().bold());
            EXPECT_LT(heading->geometry().bottom(), message->y());
            EXPECT_EQ(heading->x(), message->x());
            EXPECT_EQ(heading->width(), message->width());
            EXPECT_EQ(heading->alignment(), message->alignment());
            EXPECT_EQ(accessibleName(heading), heading->text());
        });
    }
}

TEST_F(DesktopDiscWindow, BlankNameTakesNoRoom) {
    const auto heightWith = [&](const char* name) {
        openAgain();
        frontEnd->setDisplayName(name);
        int height = 0;
        run([&] {
            EXPECT_EQ(dialog->findChild<QLabel*>("headingLabel")->isVisible(), *name == 'A');
            height = dialog->height();
        });
        return height;
    };
    const int with = heightWith("A name");
    EXPECT_LE(heightWith(" \t"), with - QFontMetrics(QApplication::font()).lineSpacing());
}

/// Behind signs and, where there are none for long, between letters; but for the eyes alone.
TEST_F(DesktopDiscWindow, LongWordInTheNameIsFolded) {
    const QChar mark(0x200b);
    const std::pair<QString, QString> rows[] = {
        {"Example Suite 2.1", "Example Suite 2.1"},
        {QString(20, 'W'), QString(20, 'W')},
        {"Release_2026_of_Example_Suite", "Release_|2026_|of_|Example_|Suite"},
        {QString(45, 'W'), QString(20, 'W') + '|' + QString(20, 'W') + '|' + QString(5, 'W')},
        {QString("e\u0301").repeated(21), QString("e\u0301").repeated(20) + "|e\u0301"},
        {QString::fromUtf8("\U0001D400").repeated(21),
         QString::fromUtf8("\U0001D400").repeated(20) + '|' + QString::fromUtf8("\U0001D400")},
        {QString(45, QChar(0x65e5)), QString(45, QChar(0x65e5))},
    };
    for (const auto& [name, shown] : rows) {
        openAgain();
        frontEnd->setDisplayName(name.toStdString());
        run([&, name = name, shown = QString(shown).replace('|', mark)] {
            auto* heading = dialog->findChild<QLabel*>("headingLabel");
            EXPECT_EQ(heading->text(), shown);
            EXPECT_EQ(accessibleName(heading), name);
        });
    }
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

/// The others have their titles too, but can do nothing.
TEST_F(DesktopDiscWindow, MenuHasTheItemsThatCanDoSomethingInOrder) {
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
            {"Info && more", true}, {"Hide", true}, {"Quit", true}};
        EXPECT_EQ(items, expected);
        const std::pair<const char*, const char*> others[] = {{"preferencesMenuItem", "Prefs"},
                                                              {"servicesMenuItem", "Services"},
                                                              {"hideOthersMenuItem", "Others"},
                                                              {"showAllMenuItem", "All"}};
        for (const auto& [name, title] : others) {
            auto* action = bar.front()->menu()->findChild<QAction*>(name);
            ASSERT_NE(action, nullptr) << name;
            EXPECT_EQ(action->text(), title);
        }
    });
}

TEST_F(DesktopDiscWindow, ListIsAsHighAsItsLinesFromThreeToTwelve) {
    run([&] {
        const auto linesOf = [&](int products) {
            std::string text;
            for (int product = 0; product < products; ++product) {
                text += (product > 0 ? "\nProduct " : "Product ") + std::to_string(product);
            }
            window->setProductList(text);
            QApplication::processEvents();
            return (list->viewport()->height() - 2 * static_cast<int>(list->document()->documentMargin())) /
                   list->fontMetrics().lineSpacing();
        };
        EXPECT_EQ(linesOf(1), 3);
        EXPECT_EQ(linesOf(5), 5);
        EXPECT_FALSE(list->verticalScrollBar()->isVisible());
        EXPECT_EQ(linesOf(12), 12);
        EXPECT_FALSE(list->verticalScrollBar()->isVisible());
        EXPECT_EQ(linesOf(60), 12);
        EXPECT_TRUE(list->verticalScrollBar()->isVisible());
        EXPECT_EQ(linesOf(4), 4);
        EXPECT_FALSE(list->verticalScrollBar()->isVisible());
        const QSize whole = dialog->size();
        dialog->resize(dialog->minimumSizeHint());
        EXPECT_TRUE(list->verticalScrollBar()->isVisible());
        dialog->resize(whole);
        EXPECT_FALSE(list->verticalScrollBar()->isVisible());
        EXPECT_EQ(linesOf(60), 12);
        const int high = dialog->height();
        window->setProductList("");
        QApplication::processEvents();
        EXPECT_FALSE(list->isVisible()) << "an empty box";
        EXPECT_LT(dialog->height(), high - list->height());
    });
}

TEST_F(DesktopDiscWindow, ArrowKeysGoThroughTheList) {
    run([&] {
        window->setProductList(manyLines());
        EXPECT_TRUE(QTest::qWaitForWindowActive(dialog, 60000));
        list->setFocus();
        EXPECT_EQ(list->verticalScrollBar()->value(), 0);
        for (int line = 0; line < 20; ++line) {
            QTest::keyClick(list, Qt::Key_Down);
        }
        EXPECT_GT(list->verticalScrollBar()->value(), 0);
        for (int line = 0; line < 20; ++line) {
            QTest::keyClick(list, Qt::Key_Up);
        }
        EXPECT_EQ(list->verticalScrollBar()->value(), 0);
    });
}

/// Whatever is folded where: no line of it is empty, and none is scrolled.
TEST_F(DesktopDiscWindow, ListHasNoEmptyLineWhereANameJustFits) {
    run([&] {
        // Fonts whose lines have other heights, letters of other widths.
        const std::pair<const char*, QChar> rows[] = {{"DejaVu Sans", 'w'},
                                                      {"IPAGothic", 'w'},
                                                      {"IPAGothic", QChar(0x65E5)},
                                                      {"DejaVu Sans", QChar(0x0634)}};
        for (const auto& [family, letter] : rows) {
            window->setFontName(ZPKCDSearchControl::TextView, family);
            ASSERT_EQ(list->font().families(), QStringList(family));
            for (int letters = 20; letters < 80; ++letters) {
                const QString name(letters, letter);
                window->close();
                window->setProductList(("One\nTwo\nThree\n" + name).toStdString());
                window->makeKeyAndOrderFront();
                QApplication::processEvents();
                qreal height = 2 * list->document()->documentMargin();
                for (QTextBlock block = list->document()->begin(); block.isValid(); block = block.next()) {
                    height += block.layout()->boundingRect().height();
                }
                const double left = list->viewport()->height() - height;
                ASSERT_GE(left, 0) << name.toStdString();
                ASSERT_LT(left, list->fontMetrics().lineSpacing()) << name.toStdString();
                ASSERT_FALSE(list->verticalScrollBar()->isVisible()) << name.toStdString();
            }
        }
    });
}

TEST_F(DesktopDiscWindow, LongNamesAreFoldedAnywhere) {
    run([&] {
        window->setProductList(std::string(300, 'w'));
        QApplication::processEvents();
        EXPECT_EQ(list->horizontalScrollBar()->maximum(), 0);
        EXPECT_FALSE(list->verticalScrollBar()->isVisible());
    });
}

TEST_F(DesktopDiscWindow, HasAPictureOfADisc) {
    run([&] { EXPECT_FALSE(dialog->findChild<QLabel*>("discLabel")->pixmap().isNull()); });
}

/// What some styles draw on the list itself is hardly seen.
TEST_F(DesktopDiscWindow, ListShowsThatItHasTheKeysAroundIt) {
    run([&] {
        EXPECT_TRUE(QTest::qWaitForWindowActive(dialog));
        constexpr int kAround = 4;
        const auto ring = [&] {
            QApplication::processEvents();
            QImage image =
                dialog->grab(list->geometry().adjusted(-kAround, -kAround, kAround, kAround)).toImage();
            QPainter(&image).fillRect(QRect(QPoint(kAround, kAround), list->size()), Qt::black);
            return image;
        };
        const QImage without = ring();
        list->setFocus();
        EXPECT_NE(ring(), without);
        search->setFocus();
        EXPECT_EQ(ring(), without);
    });
}

TEST_F(DesktopDiscWindow, ButtonsStandInTheDesktopsOrder) {
    run([&] {
        auto* box = dialog->findChild<QDialogButtonBox*>("buttonBox");
        ASSERT_NE(box, nullptr);
        EXPECT_EQ(box->buttonRole(search), QDialogButtonBox::AcceptRole);
        EXPECT_EQ(box->buttonRole(cancel), QDialogButtonBox::RejectRole);
        EXPECT_LT(search->x(), cancel->x());
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
            auto* box = qobject_cast<QDialog*>(QApplication::activeModalWidget());
            ASSERT_NE(box, nullptr);
            EXPECT_EQ(box->windowTitle(), "Info & more");
            EXPECT_EQ(box->findChild<QLabel*>("headingLabel")->text(), "Zephyrkit");
            EXPECT_EQ(box->findChild<QLabel*>("versionLabel")->text(), "Zephyrkit " ZPK_TEST_VERSION);
            EXPECT_GT(box->width(), box->fontMetrics().horizontalAdvance(box->windowTitle()));
            EXPECT_TRUE(box->findChildren<QAbstractButton*>().empty());
            box->close();
        });
        item("aboutAppMenuItem")->trigger();
        item("hideAppMenuItem")->trigger();
        EXPECT_TRUE(dialog->isMinimized());
    });
}

TEST_F(DesktopDiscWindow, AboutCutsNoName) {
    const QString name(100, 'W');
    frontEnd->setDisplayName(name.toStdString());
    run([&] {
        QTimer::singleShot(10, qApp, [&] {
            auto* box = qobject_cast<QDialog*>(QApplication::activeModalWidget());
            ASSERT_NE(box, nullptr);
            const auto* heading = box->findChild<QLabel*>("headingLabel");
            EXPECT_EQ(accessibleName(box->findChild<QLabel*>("headingLabel")), name);
            EXPECT_TRUE(heading->font().bold());
            EXPECT_GE(heading->width(), heading->minimumSizeHint().width());
            EXPECT_GE(heading->height(), heading->heightForWidth(heading->width()));
            box->close();
        });
        item("aboutAppMenuItem")->trigger();
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
        EXPECT_GE(list->viewport()->height(), 2 * list->fontMetrics().lineSpacing());
    });
}

TEST_F(DesktopDiscWindow, RightToLeftLanguageMirrorsIt) {
    frontEnd->setInterfaceLanguage("he");
    run([&] {
        EXPECT_GT(search->x(), cancel->x());
        EXPECT_EQ(list->document()->defaultTextOption().alignment(), Qt::AlignRight | Qt::AlignAbsolute);
    });
}

TEST_F(DesktopDiscWindow, EveryRightToLeftLineBeginsAtTheSameEdge) {
    frontEnd->setInterfaceLanguage("he");
    run([&] {
        window->setMessage(QString(QString(3, QChar(0x05E9)) + ' ').repeated(25).trimmed().toStdString());
        QApplication::processEvents();
        auto* message = dialog->findChild<QLabel*>("textField");
        const QImage shown = message->grab().toImage();
        const int line = message->fontMetrics().lineSpacing();
        const auto edge = [&](int top) {
            int last = 0;
            for (int y = top; y < top + line; ++y) {
                for (int x = 0; x < shown.width(); ++x) {
                    last = shown.pixelColor(x, y).lightness() < 128 ? qMax(last, x) : last;
                }
            }
            return last;
        };
        // No blank ends the last one.
        const int lines = message->heightForWidth(message->width()) / line;
        ASSERT_GE(lines, 2);
        EXPECT_GT(edge(0), shown.width() / 2);
        EXPECT_EQ(edge(0), edge((lines - 1) * line));
    });
}

TEST_F(DesktopDiscWindow, ProgressAndAlertOverItTakeTheKeyboardAndGiveItBack) {
    run([&] {
        auto progress = frontEnd->createProgressWindow();
        progress->makeKeyAndOrderFront();
        auto session = frontEnd->beginModalSessionForWindow(*progress);
        const QProgressBar* bar = nullptr;
        while (bar == nullptr) {
            session->run();
            bar = findVisible<QProgressBar>("progressIndicator");
        }
        QWidget* progressWidget = bar->window();
        EXPECT_EQ(QApplication::activeModalWidget(), progressWidget);
        EXPECT_EQ(progressWidget->windowHandle()->transientParent(), dialog->windowHandle());
        session.reset();
        progress->close();
        progress.reset();
        EXPECT_EQ(QApplication::activeModalWidget(), dialog);
        inNextLoop([&] {
            auto* box = findVisible<QDialog>("alert");
            EXPECT_EQ(box->parentWidget(), dialog);
            box->close();
        });
        frontEnd->runAlert({"No disc", "", "OK"});
        EXPECT_EQ(QApplication::activeModalWidget(), dialog);
    });
}

/// What is over sooner would only flash; what comes has its title and its size.
TEST_F(DesktopDiscWindow, ProgressOverItComesAfterAMomentAndNotAtAllWhenItIsOver) {
    class ShowRecorder : public QObject {
    public:
        std::vector<QString> titles;

    private:
        bool eventFilter(QObject* watched, QEvent* event) override {
            if (event->type() == QEvent::Show && qobject_cast<QDialog*>(watched) != nullptr) {
                titles.push_back(qobject_cast<QDialog*>(watched)->windowTitle());
            }
            return false;
        }
    };
    run([&] {
        ShowRecorder recorder;
        qApp->installEventFilter(&recorder);
        auto progress = frontEnd->createProgressWindow();
        progress->makeKeyAndOrderFront();
        progress->setTitle("Searching");
        auto session = frontEnd->beginModalSessionForWindow(*progress);
        session->run();
        session.reset();
        progress->close();
        QTest::qWait(600);
        EXPECT_EQ(recorder.titles, std::vector<QString>{});
        progress->makeKeyAndOrderFront();
        session = frontEnd->beginModalSessionForWindow(*progress);
        while (recorder.titles.empty()) {
            session->run();
        }
        EXPECT_EQ(recorder.titles, std::vector<QString>{"Searching"});
        session.reset();
        progress->close();
        qApp->removeEventFilter(&recorder);
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

TEST_F(DesktopDiscWindow, AboutGoesByReturnAndEscape) {
    run([&] {
        for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Space, Qt::Key_Escape}) {
            bool seen = false;
            QTimer::singleShot(10, qApp, [key, &seen] {
                auto* box = qobject_cast<QDialog*>(QApplication::activeModalWidget());
                ASSERT_NE(box, nullptr);
                EXPECT_TRUE(QTest::qWaitForWindowActive(box));
                seen = true;
                QTest::keyClick(box, key);
            });
            item("aboutAppMenuItem")->trigger();
            EXPECT_TRUE(seen);
            EXPECT_EQ(QApplication::activeModalWidget(), dialog);
        }
        EXPECT_EQ(searches + cancels, 0);
    });
}

TEST_F(DesktopDiscWindow, OtherMouseButtonBringsNoMenu) {
    run([&] {
        window->setProductList(manyLines() + std::string(5000, 'x'));
        for (QWidget* widget : dialog->findChildren<QWidget*>()) {
            askForMenu(widget);
            EXPECT_EQ(findVisible<QMenu>(""), nullptr) << widget->objectName().toStdString();
        }
    });
}

}  // namespace zpk_test
