// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QDialog>
#include <QProgressBar>
#include <QPushButton>
#include <QTest>
#include <array>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>

#include "Tests/UserInterface/DesktopModule.h"
#include "Tests/UserInterface/DesktopWidgets.h"
#include "Tests/UserInterface/ScriptedDelegate.h"

// On a real X server with a window manager, where keys come from the server. The program starts both
// for itself.

namespace zpk_test {

/// What a command prints. The main thread stands still meanwhile, as it does in the launcher's pause
/// and while the setup program runs.
std::string outputOf(const std::string& command) {
    std::string output;
    FILE* pipe = popen(command.c_str(), "r");
    EXPECT_NE(pipe, nullptr);
    std::array<char, 4096> block{};
    while (fgets(block.data(), static_cast<int>(block.size()), pipe) != nullptr) {
        output += block.data();
    }
    EXPECT_NE(pclose(pipe), -1);
    return output;
}

/// The same, while the main thread goes on to handle events.
std::string outputMeanwhile(const std::string& command) {
    std::string output;
    std::atomic<bool> isDone = false;
    std::thread runner([&] {
        output = outputOf(command);
        isDone = true;
    });
    EXPECT_TRUE(QTest::qWaitFor([&] { return isDone.load(); }, 30000));
    runner.join();
    return output;
}

/// Presses a key at the server, and lets it arrive.
void pressKey(const std::string& key) {
    outputMeanwhile("xdotool key " + key);
    QTest::qWait(100);
}

/// What a screen reader finds of the launcher.
std::string accessibles() {
    return outputMeanwhile(ZPK_TEST_LIST_ACCESSIBLES " Zephyrkit");
}

bool isVisibleAtTheServer(const std::string& title) {
    return !outputOf("xdotool search --onlyvisible --name '^" + title + "$' 2>/dev/null").empty();
}

class DesktopOnDisplay : public ::testing::Test {
protected:
    std::unique_ptr<ZPKFrontEnd> frontEnd = openDesktop();

    template <class Widget>
    Widget* waitForActive(const char* name) {
        Widget* widget = findVisible<Widget>(name);
        EXPECT_NE(widget, nullptr);
        EXPECT_TRUE(QTest::qWaitForWindowActive(widget->window(), 60000));
        return widget;
    }
};

TEST_F(DesktopOnDisplay, KeysDriveTheDiscWindow) {
    std::vector<std::string> events;
    runWith(*frontEnd, [&] {
        auto window = frontEnd->createCDSearchWindow();
        window->center();
        window->setTitle("Disc");
        window->setProductList("Suite");
        window->setSearchButtonTitle("Search");
        window->setCancelButtonTitle("Cancel");
        window->setActions({[&] { events.emplace_back("search"); }, [&] { events.emplace_back("cancel"); },
                            [&] {
                                events.emplace_back("close");
                                frontEnd->stopModal(ZPKModalResponseAbort);
                                return true;
                            }});
        inNextLoop([&] {
            waitForActive<QPushButton>("searchButton");
            for (const char* key : {"Return", "Escape", "Tab", "space", "Tab", "Return", "Tab", "alt+F4"}) {
                pressKey(key);
            }
            frontEnd->abortModal();
        });
        frontEnd->runModalForWindow(*window);
        EXPECT_FALSE(isVisibleAtTheServer("Disc"));
    });
    EXPECT_EQ(events, (std::vector<std::string>{"search", "cancel", "cancel", "search", "close"}));
}

TEST_F(DesktopOnDisplay, KeysDoNotCloseTheProgressWindow) {
    runWith(*frontEnd, [&] {
        auto window = frontEnd->createProgressWindow();
        window->setTitle("Unpacking");
        inNextLoop([&] {
            auto* bar = waitForActive<QProgressBar>("progressIndicator");
            for (const char* key : {"Escape", "Return", "alt+F4"}) {
                pressKey(key);
                EXPECT_TRUE(bar->isVisible()) << key;
            }
            frontEnd->abortModal();
        });
        frontEnd->runModalForWindow(*window);
        EXPECT_TRUE(isVisibleAtTheServer("Unpacking"));
    });
}

TEST_F(DesktopOnDisplay, ReturnAndEscapeAnswerTheAlert) {
    runWith(*frontEnd, [&] {
        for (const char* key : {"Return", "Escape", "space", "alt+F4"}) {
            bool answered = false;
            QTimer::singleShot(0, qApp, [&] {
                QTimer::singleShot(60'000, qApp, [&] {
                    if (!answered) {
                        ADD_FAILURE() << key;
                        std::exit(1);
                    }
                });
                waitForActive<QDialog>("alert");
                pressKey(key);
            });
            frontEnd->runAlert({"Text", "", "OK"});
            answered = true;
        }
    });
}

TEST_F(DesktopOnDisplay, ClosedWindowIsGoneWhileTheMainThreadStandsStill) {
    runWith(*frontEnd, [&] {
        auto window = frontEnd->createProgressWindow();
        window->setTitle("Unpacking");
        inNextLoop([&] {
            waitForActive<QProgressBar>("progressIndicator");
            frontEnd->abortModal();
        });
        frontEnd->runModalForWindow(*window);
        EXPECT_TRUE(isVisibleAtTheServer("Unpacking"));
        window->close();
        EXPECT_FALSE(isVisibleAtTheServer("Unpacking"));
    });
}

TEST_F(DesktopOnDisplay, LastValueIsSeenAfterTheLoop) {
    std::thread worker;
    runWith(*frontEnd, [&] {
        auto window = frontEnd->createProgressWindow();
        window->center();
        window->setTitle("Unpacking");
        QRect bar;
        const auto pixel = [&bar](double share) {
            const int x = bar.left() + static_cast<int>(bar.width() * share);
            const std::string place = std::to_string(x) + "+" + std::to_string(bar.center().y());
            return outputOf("import -silent -window root -crop 1x1+" + place +
                            " -format '%[pixel:p{0,0}]' info:-");
        };
        inNextLoop([&] {
            auto* widget = waitForActive<QProgressBar>("progressIndicator");
            bar = QRect(widget->mapToGlobal(QPoint()), widget->size());
            worker = std::thread([&] {
                frontEnd->performOnMainThreadAndWait([&] {
                    window->progressIndicator().setDoubleValue(100);
                    window->progressIndicator().setNeedsDisplay();
                    frontEnd->stopModal(0);
                });
            });
        });
        frontEnd->runModalForWindow(*window);
        EXPECT_EQ(pixel(0.95), pixel(0.05));
        window->progressIndicator().setDoubleValue(50);
        QTest::qWait(50);
        EXPECT_NE(pixel(0.95), pixel(0.05));
    });
    worker.join();
}

void expectInTheMiddle(const QWidget* window) {
    const QPoint off = window->geometry().center() - window->screen()->geometry().center();
    EXPECT_LE(std::abs(off.x()), 5);
    EXPECT_LE(std::abs(off.y()), 30) << "more than a title bar off";
}

TEST_F(DesktopOnDisplay, AlertIsInTheMiddleOfTheScreen) {
    runWith(*frontEnd, [&] {
        inNextLoop([&] {
            auto* box = waitForActive<QDialog>("alert");
            expectInTheMiddle(box);
            box->close();
        });
        frontEnd->runAlert({"Text\n\nMore text\n\n  One\n  Two", "", "OK"});
    });
}

TEST_F(DesktopOnDisplay, WindowIsInTheMiddleOfTheScreen) {
    runWith(*frontEnd, [&] {
        auto window = frontEnd->createProgressWindow();
        window->center();
        window->setTitle("Unpacking the files of the package");
        inNextLoop([&] {
            expectInTheMiddle(waitForActive<QProgressBar>("progressIndicator")->window());
            frontEnd->abortModal();
        });
        frontEnd->runModalForWindow(*window);
    });
}

class DesktopForScreenReader : public DesktopOnDisplay {
protected:
    void SetUp() override {
        // No screen reader runs that would ask for it.
        setenv("QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1", 1);
        frontEnd.reset();
        frontEnd = openDesktop();
    }
};

TEST_F(DesktopForScreenReader, ProgressWindowTellsItsTitleAndValue) {
    runWith(*frontEnd, [&] {
        auto window = frontEnd->createProgressWindow();
        window->setTitle("Unpacking");
        window->progressIndicator().setDoubleValue(40);
        inNextLoop([&] {
            waitForActive<QProgressBar>("progressIndicator");
            const std::string found = accessibles();
            EXPECT_NE(found.find("progress bar / Unpacking / value=40"), std::string::npos) << found;
            EXPECT_NE(found.find("dialog / Unpacking"), std::string::npos) << found;
            EXPECT_NE(found.find("label / Zephyrkit"), std::string::npos) << found;
            EXPECT_EQ(found.find("label / Unpacking"), std::string::npos) << found;
            EXPECT_EQ(found.find("label /\n"), std::string::npos) << found;
            EXPECT_EQ(found.find("menu"), std::string::npos) << found;
            frontEnd->abortModal();
        });
        frontEnd->runModalForWindow(*window);
    });
}

TEST_F(DesktopForScreenReader, AlertTellsItsTextAndButton) {
    runWith(*frontEnd, [&] {
        inNextLoop([&] {
            auto* box = waitForActive<QDialog>("alert");
            const std::string found = accessibles();
            EXPECT_NE(found.find("alert / "), std::string::npos) << found;
            EXPECT_NE(found.find("label / No <b>room</b>"), std::string::npos) << found;
            EXPECT_NE(found.find("push button / OK / "), std::string::npos) << found;
            box->close();
        });
        frontEnd->runAlert({"No <b>room</b>", "", "OK"});
    });
}

TEST_F(DesktopForScreenReader, DiscWindowTellsItsTextsAndButtons) {
    runWith(*frontEnd, [&] {
        auto window = frontEnd->createCDSearchWindow();
        window->setTitle("Disc");
        window->setMessage("Insert the disc.");
        window->setProductList("Suite\nTools");
        window->setSearchButtonTitle("Search");
        window->setCancelButtonTitle("Cancel");
        inNextLoop([&] {
            waitForActive<QPushButton>("searchButton");
            const std::string found = accessibles();
            for (const char* line : {"dialog / Disc", "label / Zephyrkit", "label / Insert the disc.",
                                     "text / Insert the disc. / text=\u2068Suite\u2069|\u2068Tools\u2069",
                                     "push button / Search / ", "push button / Cancel"}) {
                EXPECT_NE(found.find(line), std::string::npos) << line << "\n" << found;
                EXPECT_EQ(found.find(line), found.rfind(line)) << line << "\n" << found;
            }
            frontEnd->abortModal();
        });
        frontEnd->runModalForWindow(*window);
    });
}

/// A server of the test's own, with no other client.
class LoneServer {
public:
    LoneServer() {
        int display[2];
        EXPECT_EQ(pipe(display), 0);
        const std::string descriptor = std::to_string(display[1]);
        m_server = fork();
        if (m_server == 0) {
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            execlp("Xvfb", "Xvfb", "-displayfd", descriptor.c_str(), "-nolisten", "tcp", nullptr);
            _exit(127);
        }
        close(display[1]);
        std::string name = ":";
        for (char digit = 0; read(display[0], &digit, 1) == 1 && digit != '\n';) {
            name += digit;
        }
        close(display[0]);
        setenv("DISPLAY", name.c_str(), 1);
    }
    ~LoneServer() { end(); }
    LoneServer(const LoneServer&) = delete;
    LoneServer& operator=(const LoneServer&) = delete;

    void end() {
        if (m_server > 0) {
            kill(m_server, SIGKILL);
            waitpid(m_server, nullptr, 0);
        }
        m_server = 0;
    }

private:
    pid_t m_server = 0;
};

void runUntilTheServerGoesAway() {
    LoneServer server;
    atexit([] { fputs("cleaned up\n", stderr); });
    const std::unique_ptr<ZPKFrontEnd> frontEnd = openDesktop();
    runWith(*frontEnd, [&] {
        auto window = frontEnd->createProgressWindow();
        QTimer::singleShot(100, qApp, [&] { server.end(); });
        frontEnd->runModalForWindow(*window);
    });
}

TEST(DesktopOnDisplayDeathTest, ServerThatGoesAwayEndsTheProcessInOrder) {
    EXPECT_EXIT(runUntilTheServerGoesAway(), ::testing::ExitedWithCode(1), "cleaned up\n");
}

}  // namespace zpk_test

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    const char* started = std::getenv("ZPK_TEST_DISPLAY_STARTED");
    if (started == nullptr && !::testing::GTEST_FLAG(list_tests)) {
        setenv("ZPK_TEST_DISPLAY_STARTED", "1", 1);
        unsetenv("QT_QPA_PLATFORM");
        const std::string filter = "--gtest_filter=" + ::testing::GTEST_FLAG(filter);
        execl(ZPK_TEST_RUN_UNDER_XVFB, ZPK_TEST_RUN_UNDER_XVFB, "-w", argv[0], filter.c_str(), nullptr);
        std::perror(ZPK_TEST_RUN_UNDER_XVFB);
        return 2;
    }
    return RUN_ALL_TESTS();
}
