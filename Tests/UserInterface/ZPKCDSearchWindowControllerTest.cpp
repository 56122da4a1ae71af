// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/ZPKCDSearchWindowController.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <future>
#include <thread>

#include "Common/CResourceBundle.h"
#include "Tests/Support/ScriptedFrontEnd.h"
#include "Tests/Support/TemporaryFolder.h"
#include "Tests/UserInterface/ScriptedVolumes.h"

using zpk_test::ScriptedFrontEnd;
using zpk_test::ScriptedVolumes;
using zpk_test::TemporaryFolder;
using zpk_test::writeFile;

namespace {

using Lines = std::vector<std::string>;

class ZPKCDSearchWindowControllerTest : public ::testing::Test {
protected:
    ZPKCDSearchWindowControllerTest() {
        writeFile(m_disc + "/top.txt", "");
        m_volumes.volumes = {{m_disc, true}};
    }

    bool finds(const Lines& searchPaths) {
        ZPKCDSearchWindowController controller(m_frontEnd, m_volumes, searchPaths, {});
        controller.pushSearch();
        return controller.isFind();
    }

    Lines loggedAfter(const std::string& first) const {
        const Lines log = m_frontEnd.log();
        return Lines(std::find(log.begin(), log.end(), first), log.end());
    }

    TemporaryFolder m_folder;
    std::string m_disc = m_folder / "disc";
    ScriptedFrontEnd m_frontEnd;
    ScriptedVolumes m_volumes;
};

TEST_F(ZPKCDSearchWindowControllerTest, WindowIsFilledInOrder) {
    const ZPKCDSearchWindowController controller(m_frontEnd, m_volumes, {"x"}, {"Tandem", "", "Set"});
    EXPECT_EQ(m_frontEnd.log(),
              (Lines{"disc: center", "disc: font 0=ZPKString_FontName_ForMac",
                     "disc: font 1=ZPKString_FontName_ForMac", "disc: font 2=ZPKString_FontName_ForMac",
                     "disc: font 3=ZPKString_FontName_ForMac", "disc: title=ZPKString_DISCCHECK_TITLE",
                     "disc: message=ZPKString_DISCCHECK_MESSAGE", "disc: search=ZPKString_DISCCHECK_START",
                     "disc: cancel=ZPKString_DISCCHECK_CANCEL", "disc: products=Tandem\n\nSet"}));
    EXPECT_FALSE(controller.isFind());
}

TEST_F(ZPKCDSearchWindowControllerTest, EmptyFontNameKeepsTheStandardFont) {
    writeFile(m_folder / "UILang/en/ZPKStringTable.def", "ZPKString_FontName_ForMac = ;");
    varno_zpk::CResourceBundle::AddDefaultBundlePath((m_folder / "UILang").c_str());
    const ZPKCDSearchWindowController controller(m_frontEnd, m_volumes, {}, {});
    const Lines log = m_frontEnd.log();
    EXPECT_EQ(log[1], "disc: title=ZPKString_DISCCHECK_TITLE");
    EXPECT_EQ(log.back(), "disc: products=");
}

TEST_F(ZPKCDSearchWindowControllerTest, NoVolumesIsTold) {
    m_volumes.volumes.clear();
    EXPECT_FALSE(finds({"top.txt"}));
    const std::string alert = "alert 2: ZPKString_UPDATE_INVALID_DISC||ZPKString_OK";
    EXPECT_EQ(loggedAfter(alert), (Lines{alert, "disc: gone"}));
}

TEST_F(ZPKCDSearchWindowControllerTest, UnsuccessfulSearchShowsAnEndlessBarThenTheAlert) {
    ZPKCDSearchWindowController controller(m_frontEnd, m_volumes, {"none"}, {});
    controller.pushSearch();
    EXPECT_EQ(loggedAfter("progress: center"),
              (Lines{"progress: center", "bar: min=0", "bar: max=100", "bar: threaded", "bar: indeterminate",
                     "bar: start", "progress: front", "progress: title=ZPKString_DISCCHECK_SERACHING",
                     "session: begin", "session: end", "bar: stop", "progress: close", "progress: gone",
                     "alert 2: ZPKString_UPDATE_INVALID_DISC||ZPKString_OK"}));
}

TEST_F(ZPKCDSearchWindowControllerTest, FoundDiscEndsTheModalLoopAndClosesTheWindow) {
    ZPKCDSearchWindowController controller(m_frontEnd, m_volumes, {"top.txt"}, {});
    m_frontEnd.onDiscWindow = [](const ZPKCDSearchWindow::Actions& actions) { actions.pushSearch(); };
    EXPECT_EQ(m_frontEnd.runModalForWindow(*controller.window()), ZPKModalResponseStop);
    EXPECT_TRUE(controller.isFind());
    EXPECT_EQ(loggedAfter("progress: close"),
              (Lines{"progress: close", "progress: gone", "disc: close", "modal: end -1000"}));
}

TEST_F(ZPKCDSearchWindowControllerTest, CancelAbortsAndCloses) {
    ZPKCDSearchWindowController controller(m_frontEnd, m_volumes, {}, {});
    m_frontEnd.onDiscWindow = [](const ZPKCDSearchWindow::Actions& actions) { actions.pushCancel(); };
    EXPECT_EQ(m_frontEnd.runModalForWindow(*controller.window()), ZPKModalResponseAbort);
    EXPECT_EQ(loggedAfter("modal: begin"), (Lines{"modal: begin", "disc: close", "modal: end -1001"}));
}

TEST_F(ZPKCDSearchWindowControllerTest, CloseBoxAbortsAndLetsTheWindowClose) {
    ZPKCDSearchWindowController controller(m_frontEnd, m_volumes, {}, {});
    bool closes = false;
    m_frontEnd.onDiscWindow = [&closes](const ZPKCDSearchWindow::Actions& actions) {
        closes = actions.windowShouldClose();
    };
    EXPECT_EQ(m_frontEnd.runModalForWindow(*controller.window()), ZPKModalResponseAbort);
    EXPECT_TRUE(closes);
    EXPECT_FALSE(controller.isFind());
}

TEST_F(ZPKCDSearchWindowControllerTest, ASecondPressSearchesAfresh) {
    ZPKCDSearchWindowController controller(m_frontEnd, m_volumes, {"*.new"}, {});
    controller.pushSearch();
    EXPECT_FALSE(controller.isFind());
    writeFile(m_disc + "/late.new", "");
    controller.pushSearch();
    EXPECT_TRUE(controller.isFind());
}

TEST_F(ZPKCDSearchWindowControllerTest, OnceFoundStaysFound) {
    ZPKCDSearchWindowController controller(m_frontEnd, m_volumes, {"top.txt"}, {});
    controller.pushSearch();
    m_volumes.volumes.clear();
    controller.pushSearch();
    EXPECT_TRUE(controller.isFind());
}

TEST_F(ZPKCDSearchWindowControllerTest, FoundDiscIsTheAnswerOfTheModalRun) {
    ZPKCDSearchWindowController controller(m_frontEnd, m_volumes, {"top.txt"}, {});
    m_frontEnd.onDiscWindow = [](const ZPKCDSearchWindow::Actions& actions) { actions.pushSearch(); };
    EXPECT_TRUE(controller.runModal());
}

TEST_F(ZPKCDSearchWindowControllerTest, CancelCountsWhateverWasFoundBefore) {
    ZPKCDSearchWindowController controller(m_frontEnd, m_volumes, {"top.txt"}, {});
    controller.pushSearch();
    ASSERT_TRUE(controller.isFind());
    m_frontEnd.onDiscWindow = [](const ZPKCDSearchWindow::Actions& actions) { actions.pushCancel(); };
    EXPECT_FALSE(controller.runModal());
}

TEST_F(ZPKCDSearchWindowControllerTest, LoopThatSomebodyElseStopsIsNoDisc) {
    ZPKCDSearchWindowController controller(m_frontEnd, m_volumes, {"top.txt"}, {});
    m_frontEnd.onDiscWindow = [this](const auto&) { m_frontEnd.stopModal(ZPKModalResponseStop); };
    EXPECT_FALSE(controller.runModal());
}

TEST_F(ZPKCDSearchWindowControllerTest, QuitWhileADiscIsSearchedCountsAsCancelAndEndsTheSearch) {
    for (const char* searchPath : {"top.txt", "none"}) {
        ZPKCDSearchWindowController controller(m_frontEnd, m_volumes, {searchPath}, {});
        std::promise<void> windowGone;
        bool hasEnded = false;
        m_frontEnd.onLog = [&windowGone](const std::string& line) {
            if (line == "progress: close") {
                windowGone.set_value();
            }
        };
        m_frontEnd.onDiscWindow = [&](const ZPKCDSearchWindow::Actions& actions) {
            m_volumes.onAsked = [&] {
                // A global menu reaches the window below the progress window.
                m_frontEnd.performOnMainThreadAndWait([&actions] { actions.windowShouldClose(); });
                windowGone.get_future().wait();
                hasEnded = true;
            };
            actions.pushSearch();
            EXPECT_TRUE(hasEnded) << "the search outlives what it uses";
        };
        EXPECT_FALSE(controller.runModal());
        m_frontEnd.onLog = nullptr;
    }
    const Lines log = m_frontEnd.log();
    EXPECT_EQ(std::count(log.begin(), log.end(), "modal: end -1001"), 2);
    EXPECT_TRUE(std::none_of(log.begin(), log.end(),
                             [](const std::string& line) { return line.starts_with("alert"); }));
}

TEST_F(ZPKCDSearchWindowControllerTest, SearchButtonDoesNothingWhileASearchRuns) {
    ZPKCDSearchWindowController controller(m_frontEnd, m_volumes, {"none"}, {});
    int asked = 0;
    m_volumes.onAsked = [&] {
        ++asked;
        m_frontEnd.performOnMainThreadAndWait([&] { controller.pushSearch(); });
    };
    controller.pushSearch();
    EXPECT_EQ(asked, 1);
}

TEST_F(ZPKCDSearchWindowControllerTest, SearchRunsOnAThreadOfItsOwn) {
    std::thread::id searching;
    m_volumes.onAsked = [&searching] { searching = std::this_thread::get_id(); };
    finds({"none"});
    EXPECT_NE(searching, std::thread::id());
    EXPECT_NE(searching, std::this_thread::get_id());
}

TEST_F(ZPKCDSearchWindowControllerTest, FailureInTheSearchEndsItAsNotFound) {
    m_volumes.onAsked = [] { throw std::runtime_error("the device is gone"); };
    EXPECT_FALSE(finds({"top.txt"}));
}

TEST_F(ZPKCDSearchWindowControllerTest, BrokenProgressFormCancels) {
    ZPKCDSearchWindowController controller(m_frontEnd, m_volumes, {"top.txt"}, {});
    m_frontEnd.formsAreBroken = true;
    m_frontEnd.onDiscWindow = [](const ZPKCDSearchWindow::Actions& actions) { actions.pushSearch(); };
    EXPECT_EQ(m_frontEnd.runModalForWindow(*controller.window()), ZPKModalResponseAbort);
    EXPECT_FALSE(controller.isFind());
}

}  // namespace
