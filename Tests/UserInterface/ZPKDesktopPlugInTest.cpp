// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <clocale>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "Tests/Support/TemporaryFolder.h"
#include "Tests/UserInterface/DesktopModule.h"
#include "Tests/UserInterface/ScriptedDelegate.h"
#include "UserInterface/Terminal/ZPKTerminalFrontEnd.h"

// The program does not link the toolkit, so that every test starts it afresh, and a test of its
// failures does so in a child.

namespace zpk_test {

void clearDisplays() {
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "WAYLAND_SOCKET", "QT_QPA_PLATFORM",
                             "QT_QPA_PLATFORM_PLUGIN_PATH", "XDG_SESSION_TYPE"}) {
        unsetenv(name);
    }
}

int runOnTerminal() {
    ZPKTerminalFrontEnd frontEnd;
    const int status = runWith(frontEnd, [&] { frontEnd.runAlert({"on the terminal", "", "OK"}); });
    return status == 0 ? 42 : 1;
}

/// Opens the desktop and ends with what it shows, or with 3 when there is no display.
[[noreturn]] void openAndExit(const ZPKDesktopParameters& parameters) {
    const std::unique_ptr<ZPKFrontEnd> frontEnd = openDesktop(parameters);
    exit(frontEnd == nullptr ? 3 : runWith(*frontEnd, [] {}));
}

ZPKDesktopParameters parametersWithTerminal() {
    ZPKDesktopParameters parameters = desktopParameters();
    parameters.runWithoutDesktop = runOnTerminal;
    return parameters;
}

class DesktopStart : public ::testing::Test {
protected:
    void SetUp() override { clearDisplays(); }
};

/// By their name these run first, while the process has no thread but its main thread.
using DesktopStartDeathTest = DesktopStart;

TEST_F(DesktopStart, WithoutADisplayThereIsNoFrontEnd) {
    EXPECT_EQ(openDesktop(desktopParameters()), nullptr);
}

TEST_F(DesktopStart, DisplayThatRefusesGivesNoFrontEnd) {
    for (const char* display : {":12345", "no-such-host.invalid:0", "nonsense", ":99999999999"}) {
        setenv("DISPLAY", display, 1);
        EXPECT_EQ(openDesktop(desktopParameters()), nullptr) << display;
        setenv("QT_QPA_PLATFORM", "xcb", 1);
        EXPECT_EQ(openDesktop(desktopParameters()), nullptr) << display;
        unsetenv("QT_QPA_PLATFORM");
    }
}

TEST_F(DesktopStart, WaylandThatIsNotThereGivesNoFrontEnd) {
    const TemporaryFolder folder;
    setenv("XDG_RUNTIME_DIR", folder.path().c_str(), 1);
    for (const std::string& display :
         {std::string("wayland-0"), folder / "wayland-0", "/" + std::string(200, 'x')}) {
        setenv("WAYLAND_DISPLAY", display.c_str(), 1);
        EXPECT_EQ(openDesktop(desktopParameters()), nullptr) << display;
    }
}

TEST_F(DesktopStart, WaylandThatTakesTheConnectionAndGoesAwayGivesNoFrontEnd) {
    const TemporaryFolder folder;
    const int listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string path = folder / "wayland-0";
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    ASSERT_EQ(bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
    ASSERT_EQ(listen(listener, 1), 0);
    setenv("XDG_RUNTIME_DIR", folder.path().c_str(), 1);
    setenv("WAYLAND_DISPLAY", "wayland-0", 1);
    const pid_t compositor = fork();
    if (compositor == 0) {
        alarm(60);
        for (;;) {
            close(accept(listener, nullptr, nullptr));
        }
    }
    EXPECT_EQ(openDesktop(parametersWithTerminal()), nullptr);
    kill(compositor, SIGKILL);
    waitpid(compositor, nullptr, 0);
    close(listener);
}

TEST_F(DesktopStartDeathTest, PlatformThatDoesNotExistEndsInTheRunWithoutDesktop) {
    setenv("QT_QPA_PLATFORM", "nonsense", 1);
    EXPECT_EXIT(openAndExit(parametersWithTerminal()), ::testing::ExitedWithCode(42),
                "^Cannot use the desktop: [^\n]*nonsense[^\n]*\non the terminal\n$");
}

TEST_F(DesktopStartDeathTest, PlatformThatCannotConnectEndsInTheRunWithoutDesktop) {
    // The probe leaves alone what it does not know, here a list of platforms.
    setenv("QT_QPA_PLATFORM", "xcb;xcb", 1);
    setenv("DISPLAY", ":12345", 1);
    EXPECT_EXIT(openAndExit(parametersWithTerminal()), ::testing::ExitedWithCode(42), "on the terminal\n$");
}

TEST_F(DesktopStartDeathTest, PlugInFolderThatIsNotThereIsNoHindrance) {
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    setenv("QT_QPA_PLATFORM_PLUGIN_PATH", "/nonexistent", 1);
    EXPECT_EXIT(openAndExit(parametersWithTerminal()), ::testing::ExitedWithCode(0), "^$");
}

TEST_F(DesktopStartDeathTest, WithoutAnotherWayTheProcessEndsWithOne) {
    setenv("QT_QPA_PLATFORM", "nonsense", 1);
    EXPECT_EXIT(openAndExit(desktopParameters()), ::testing::ExitedWithCode(1),
                "^Cannot use the desktop: [^\n]+\n$");
}

TEST_F(DesktopStart, ArgumentsReachTheToolkitAndStayWhole) {
    std::string texts[] = {"Zephyrkit", "-platform", "offscreen", "other"};
    std::vector<char*> arguments;
    for (std::string& text : texts) {
        arguments.push_back(text.data());
    }
    arguments.push_back(nullptr);
    const std::vector<char*> before = arguments;
    setenv("QT_QPA_PLATFORM", "nonsense", 1);
    ZPKDesktopParameters parameters = desktopParameters();
    parameters.argc = 4;
    parameters.argv = arguments.data();
    EXPECT_NE(openDesktop(parameters), nullptr);
    EXPECT_EQ(arguments, before);
    EXPECT_EQ(parameters.argc, 4);
}

TEST_F(DesktopStart, LeavesTheEnvironmentAndTheNumberFormatAlone) {
    // A locale of this test's own, with another decimal mark, since few machines have any.
    const TemporaryFolder locales;
    const std::string make = "localedef --no-archive -i de_DE -f UTF-8 '" + (locales / "de_DE.UTF-8") + "'";
    ASSERT_EQ(std::system(make.c_str()), 0);
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    setenv("LOCPATH", locales.path().c_str(), 1);
    setenv("LC_ALL", "de_DE.UTF-8", 1);
    ASSERT_NE(std::setlocale(LC_ALL, ""), nullptr);
    ASSERT_STREQ(std::localeconv()->decimal_point, ",");
    const auto environment = [] {
        std::vector<std::string> texts;
        for (char** entry = environ; *entry != nullptr; ++entry) {
            texts.emplace_back(*entry);
        }
        return texts;
    };
    const std::vector<std::string> before = environment();
    {
        const std::unique_ptr<ZPKFrontEnd> frontEnd = openDesktop();
        runWith(*frontEnd, [&] {
            frontEnd->setInterfaceLanguage("ja");
            const auto window = frontEnd->createProgressWindow();
            window->makeKeyAndOrderFront();
            EXPECT_EQ(environment(), before);
            EXPECT_STREQ(std::localeconv()->decimal_point, ".");
        });
    }
    EXPECT_EQ(environment(), before);
}

}  // namespace zpk_test
