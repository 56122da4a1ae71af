// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/ZPKProgressWindowController.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "UserInterface/ZPKFrontEnd.h"

namespace {

using Calls = std::vector<std::string>;

std::string number(double value) {
    return std::to_string(value);
}

class RecordingWindow : public ZPKProgressWindow, private ZPKProgressIndicator {
public:
    explicit RecordingWindow(Calls& calls) : m_calls(calls) {}
    ~RecordingWindow() override { m_calls.emplace_back("released"); }

    ZPKProgressIndicator& progressIndicator() override { return *this; }
    void center() override { m_calls.emplace_back("center"); }
    void setTitle(const std::string& title) override { m_calls.push_back("title " + title); }
    void makeKeyAndOrderFront() override { m_calls.emplace_back("front"); }
    void close() override { m_calls.emplace_back("close"); }

private:
    void setMinValue(double value) override { m_calls.push_back("min " + number(value)); }
    void setMaxValue(double value) override { m_calls.push_back("max " + number(value)); }
    void setDoubleValue(double value) override { m_calls.push_back("value " + number(value)); }
    void setIndeterminate(bool yes) override { m_calls.emplace_back(yes ? "indeterminate" : "determinate"); }
    void setUsesThreadedAnimation(bool yes) override { m_calls.emplace_back(yes ? "threaded" : "plain"); }
    void startAnimation() override { m_calls.emplace_back("start"); }
    void stopAnimation() override { m_calls.emplace_back("stop"); }
    void setNeedsDisplay() override { m_calls.emplace_back("display"); }

    Calls& m_calls;
};

class RecordingFrontEnd : public ZPKFrontEnd {
public:
    Calls calls;
    bool makesWindows = true;

    int run(ZPKApplicationDelegate&) override { return 0; }
    void terminate() override {}
    void activateIgnoringOtherApps() override {}
    void setInterfaceLanguage(const std::string&) override {}
    void setMenuItemTitle(ZPKMenuItem, const std::string&) override {}
    std::unique_ptr<ZPKProgressWindow> createProgressWindow() override {
        return makesWindows ? std::make_unique<RecordingWindow>(calls) : nullptr;
    }
    std::unique_ptr<ZPKCDSearchWindow> createCDSearchWindow() override { return nullptr; }
    void runAlert(const ZPKAlert&) override {}
    int runModalForWindow(ZPKWindow&) override { return 0; }
    void stopModal(int) override {}
    void abortModal() override {}
    std::unique_ptr<ZPKModalSession> beginModalSessionForWindow(ZPKWindow&) override { return nullptr; }
    void performOnMainThreadAndWait(const std::function<void()>&) override {}
    void closeToOtherThreads() override {}
};

TEST(ProgressWindowControllerTest, PreparesTheWindowWhenItIsLoaded) {
    RecordingFrontEnd frontEnd;
    const ZPKProgressWindowController controller(frontEnd);
    EXPECT_EQ(frontEnd.calls, (Calls{"center", "min 0.000000", "max 100.000000", "threaded"}));
    EXPECT_EQ(controller.progressIndicator(), &controller.window()->progressIndicator());
}

TEST(ProgressWindowControllerTest, TitleIsTheWindowsTitle) {
    RecordingFrontEnd frontEnd;
    ZPKProgressWindowController controller(frontEnd);
    frontEnd.calls.clear();
    controller.setTitle("Unpacking");
    EXPECT_EQ(frontEnd.calls, Calls{"title Unpacking"});
}

TEST(ProgressWindowControllerTest, ValueMovesTheBarAndMarksItForRedrawing) {
    RecordingFrontEnd frontEnd;
    ZPKProgressWindowController controller(frontEnd);
    frontEnd.calls.clear();
    controller.setProgressValue(40.5);
    EXPECT_EQ(frontEnd.calls, (Calls{"value 40.500000", "display"}));
}

TEST(ProgressWindowControllerTest, CloseLeavesTheWindowToItsOwner) {
    RecordingFrontEnd frontEnd;
    {
        ZPKProgressWindowController controller(frontEnd);
        frontEnd.calls.clear();
        controller.close();
        EXPECT_EQ(frontEnd.calls, Calls{"close"});
    }
    EXPECT_EQ(frontEnd.calls, (Calls{"close", "released"}));
}

TEST(ProgressWindowControllerTest, WithoutAWindowEveryOperationDoesNothing) {
    RecordingFrontEnd frontEnd;
    frontEnd.makesWindows = false;
    ZPKProgressWindowController controller(frontEnd);
    controller.setTitle("T");
    controller.setProgressValue(10);
    controller.close();
    EXPECT_EQ(controller.window(), nullptr);
    EXPECT_EQ(controller.progressIndicator(), nullptr);
    EXPECT_TRUE(frontEnd.calls.empty());
}

}  // namespace
