// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "InstallerCore/ZPKPayloadExtraction.h"

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <thread>

#include "Tests/InstallerCore/ZPKCoreFixture.h"
#include "UserInterface/ZPKProgressWindowController.h"

namespace fs = std::filesystem;

namespace {

class ZPKPayloadExtractionTest : public zpk_test::ZPKCoreFixture {
protected:
    ZPKPayloadExtractionTest() { fs::create_directory(m_target); }

    ZPKPayloadExtraction::WorkOrder order(const std::string& archive,
                                          ZPKProgressWindowController* controller = nullptr) const {
        ZPKPayloadExtraction::WorkOrder order = {{"DataFilePath", archive},
                                                 {"TemporaryFolderPath", m_target}};
        if (controller != nullptr) {
            order["ProgressController"] = controller;
        }
        return order;
    }

    bool run() { return m_extraction.run(m_bundle.resource("Data.datx"), m_target, "the title"); }

    /// Once the tool that never ends runs, does `action` on the main thread, in its loop.
    void whileTheToolRuns(const std::function<void()>& action) {
        installEndlessTool();
        m_frontEnd.onLog = [this, action](const std::string& line) {
            if (line == "bar: value=40") {
                // On the main thread: the thread that unpacks goes on when this returns.
                m_person = std::thread([this, action] {
                    m_toolsNumber = numberOfTool();
                    m_frontEnd.performOnMainThreadAndWait(action);
                });
            } else if (line == "progress: gone") {
                m_toolOutlivesTheWindow = runs(m_toolsNumber);
            }
        };
    }

    std::thread m_person;
    pid_t m_toolsNumber = 0;
    bool m_toolOutlivesTheWindow = true;
    std::string m_target = m_folder / "staging";
    ZPKPayloadExtraction m_extraction{m_frontEnd, m_clock};
};

TEST_F(ZPKPayloadExtractionTest, TaskReportsThreeValuesAndEndsTheLoop) {
    addSetup("setup");
    pack();
    ZPKProgressWindowController controller(m_frontEnd);
    Lines seen;
    m_frontEnd.onLog = [&](const std::string& line) {
        if (line.starts_with("bar: value")) {
            seen.push_back(line + (fs::exists(m_target + "/Data.dat") ? " plain" : "") +
                           (fs::exists(m_target + "/Data/setup") ? " unpacked" : ""));
        }
    };
    m_extraction.extract(order(m_bundle.resource("Data.datx"), &controller));
    EXPECT_EQ(seen, (Lines{"bar: value=10", "bar: value=40 plain", "bar: value=100 plain unpacked"}));
    EXPECT_FALSE(fs::exists(m_target + "/Data.dat"));
    EXPECT_EQ(m_frontEnd.runModalForWindow(*controller.window()), ZPKModalResponseAbort);
    EXPECT_TRUE(m_extraction.outcome());
}

TEST_F(ZPKPayloadExtractionTest, TaskWorksWithoutController) {
    addSetup("setup");
    pack();
    m_extraction.extract(order(m_bundle.resource("Data.datx")));
    EXPECT_TRUE(fs::exists(m_target + "/Data/setup"));
    EXPECT_EQ(logged({"bar"}), Lines{});
}

TEST_F(ZPKPayloadExtractionTest, TaskOfAMissingArchiveStillEndsTheLoop) {
    ZPKProgressWindowController controller(m_frontEnd);
    m_extraction.extract(order(m_folder / "none", &controller));
    EXPECT_EQ(m_frontEnd.runModalForWindow(*controller.window()), ZPKModalResponseAbort);
}

TEST_F(ZPKPayloadExtractionTest, WayInWhichTheToolFailedIsKept) {
    m_extraction.extract(order(m_folder / "none"));
    ASSERT_FALSE(m_extraction.outcome());
    EXPECT_EQ(m_extraction.outcome().failure().path(), m_bundle.path() + "/Contents/Helpers/ditto");
    EXPECT_EQ(m_extraction.outcome().failure().reason(), "Ended with status 1");
    fs::remove(m_bundle.path() + "/Contents/Helpers/ditto");
    m_extraction.extract(order(m_folder / "none"));
    EXPECT_EQ(m_extraction.outcome().failure().reason(), "No such file or directory");
}

TEST_F(ZPKPayloadExtractionTest, RunShowsTheWindowUntilAllIsUnpacked) {
    addSetup("setup");
    pack();
    EXPECT_TRUE(run());
    EXPECT_EQ(
        logged({"progress:", "bar: value", "modal"}),
        (Lines{"progress: center", "progress: title=the title", "modal: begin", "bar: value=10",
               "bar: value=40", "bar: value=100", "modal: end -1001", "progress: close", "progress: gone"}));
    EXPECT_EQ(m_clock.pauses.size(), 1u);
    EXPECT_TRUE(fs::exists(m_target + "/Data/setup"));
}

TEST_F(ZPKPayloadExtractionTest, WithoutAWindowNothingIsUnpacked) {
    addSetup("setup");
    pack();
    m_frontEnd.formsAreBroken = true;
    EXPECT_FALSE(run());
    EXPECT_TRUE(fs::is_empty(m_target));
}

TEST_F(ZPKPayloadExtractionTest, LoopThatEndsWhileTheToolRunsEndsTheToolAndTheThread) {
    pack();
    whileTheToolRuns([this] { m_frontEnd.stopModal(ZPKModalResponseAbort); });
    EXPECT_FALSE(run());
    m_person.join();
    EXPECT_EQ(logged({"bar: value", "progress: "}).back(), "progress: gone");
    EXPECT_EQ(logged({"bar: value=100"}), Lines{});
    EXPECT_GT(m_toolsNumber, 0);
    EXPECT_FALSE(m_toolOutlivesTheWindow);
    EXPECT_TRUE(m_clock.pauses.empty());
}

TEST_F(ZPKPayloadExtractionTest, LoopThatEndsWhileTheThreadWaitsForTheMainThreadLetsItGo) {
    addSetup("setup");
    pack();
    for (const char* const moment : {"modal: begin", "bar: value=10"}) {
        zpk_test::ScriptedFrontEnd frontEnd;
        ZPKPayloadExtraction extraction(frontEnd, m_clock);
        frontEnd.onLog = [&](const std::string& line) {
            if (line == moment) {
                frontEnd.stopModal(ZPKModalResponseAbort);
            }
        };
        EXPECT_FALSE(extraction.run(m_bundle.resource("Data.datx"), m_target, "")) << moment;
    }
}

TEST_F(ZPKPayloadExtractionTest, LoopThatThrowsEndsTheThreadBeforeTheWindowGoes) {
    pack();
    installEndlessTool();
    m_frontEnd.onLog = [&](const std::string& line) {
        if (line == "bar: value=10") {
            throw std::runtime_error("no memory");
        }
    };
    EXPECT_THROW(run(), std::runtime_error);
    EXPECT_EQ(logged({"progress: gone", "bar: value=40"}), Lines{"progress: gone"});
}

TEST_F(ZPKPayloadExtractionTest, LoopThatThrowsWhileTheToolRunsEndsTheToolBeforeTheWindowGoes) {
    pack();
    whileTheToolRuns([] { throw std::runtime_error("no memory"); });
    EXPECT_THROW(run(), std::runtime_error);
    m_person.join();
    EXPECT_GT(m_toolsNumber, 0);
    EXPECT_FALSE(m_toolOutlivesTheWindow);
}

TEST_F(ZPKPayloadExtractionTest, StopWithoutARunDoesNothing) {
    m_extraction.stop();
    EXPECT_EQ(m_frontEnd.log(), Lines{});
}

}  // namespace
