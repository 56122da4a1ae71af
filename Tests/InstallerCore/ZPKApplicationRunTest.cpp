// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "InstallerCore/ZPKApplicationRun.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <semaphore>
#include <stdexcept>

#include "Tests/InstallerCore/ZPKCoreFixture.h"
#include "Tests/Platform/DefaultSignals.h"
#include "Tests/Support/CapturedStreams.h"
#include "Tests/Support/FailingAllocation.h"

namespace fs = std::filesystem;
using zpk_test::captureStreams;
using zpk_test::FailingAllocation;
using zpk_test::ScriptedFrontEnd;
using zpk_test::writeFile;

namespace {

class ZPKApplicationRunTest : public zpk_test::ZPKCoreFixture {
protected:
    zpk_test::DefaultSignals m_signals;
};

TEST_F(ZPKApplicationRunTest, RunGivesTheFrontEndsStatus) {
    addSetup("setup");
    pack();
    EXPECT_EQ(ZPKApplicationRun::run(m_frontEnd, m_volumes, m_clock), 0);
    EXPECT_TRUE(setupHasRun());
    ScriptedFrontEnd broken;
    broken.formsAreBroken = true;
    EXPECT_EQ(ZPKApplicationRun::run(broken, m_volumes, m_clock), 1);
}

TEST_F(ZPKApplicationRunTest, SetupProgramThatCannotStartGivesStatusOne) {
    addStartup("Exec='/no/such/program'");
    pack();
    int status = 0;
    captureStreams([&] { status = ZPKApplicationRun::run(m_frontEnd, m_volumes, m_clock); });
    EXPECT_EQ(status, 1);
    EXPECT_FALSE(fs::exists(m_staging));
}

TEST_F(ZPKApplicationRunTest, ExceptionWhileStagingIsALineAndStatusOneAndLeavesNothing) {
    constexpr std::size_t kMoreThanEver = 10'000;
    std::size_t failures = 0;
    std::size_t failuresInTheMaking = 0;
    for (std::size_t number = 1; number < kMoreThanEver; ++number) {
        writeFile(m_staging + "/old", "left by an interrupted run");
        ScriptedFrontEnd frontEnd;
        std::unique_ptr<FailingAllocation> failing;
        // From the moment in which the staging folder is about to be made until it is there.
        frontEnd.onLog = [&](const std::string& line) {
            if (line == "activate") {
                failing = std::make_unique<FailingAllocation>(number);
            } else if (line.starts_with("progress")) {
                failing.reset();
            }
        };
        int status = 0;
        const auto streams =
            captureStreams([&] { status = ZPKApplicationRun::run(frontEnd, m_volumes, m_clock); });
        failing.reset();
        if (!FailingAllocation::hasFailed()) {
            EXPECT_EQ(status, 0);
            break;
        }
        ++failures;
        EXPECT_EQ(status, 1) << number;
        EXPECT_EQ(streams.standardOutput, "") << number;
        EXPECT_EQ(streams.standardError, "Zephyrkit: std::bad_alloc\n") << number;
        // Before its place was touched, what an earlier run left may stay; afterwards nothing may.
        const bool isUntouched = fs::exists(m_staging + "/old");
        EXPECT_TRUE(isUntouched || fs::is_empty(m_temporary)) << number;
        failuresInTheMaking += isUntouched ? 0 : 1;
    }
    EXPECT_GT(failures, 5u);
    EXPECT_GT(failuresInTheMaking, 3u);
}

TEST_F(ZPKApplicationRunTest, SignalEndsTheQuestionForTheDiscAndShowsNothingMore) {
    addConditions("<Conditions><Disc FilePath='disc'/></Conditions>");
    pack();
    std::size_t turns = 0;
    m_frontEnd.onDiscWindow = [&turns](const auto&) {
        if (++turns == 1) {
            ::kill(::getpid(), SIGINT);
        }
    };
    EXPECT_EQ(ZPKApplicationRun::run(m_frontEnd, m_volumes, m_clock), 128 + SIGINT);
    EXPECT_EQ(logged({"alert"}), Lines{});
    EXPECT_TRUE(fs::is_empty(m_temporary));
}

/// Tells when the thread that tells of signals has come to it.
class FrontEndThatIsAsked : public ScriptedFrontEnd {
public:
    bool cancelQuestion() override {
        asked.release();
        return false;
    }

    std::binary_semaphore asked{0};
};

TEST_F(ZPKApplicationRunTest, FailureWhileASignalWaitsForTheMainThreadEndsTheRun) {
    FrontEndThatIsAsked frontEnd;
    frontEnd.onLog = [&frontEnd](const std::string& line) {
        if (line == "activate") {
            ::kill(::getpid(), SIGINT);
            frontEnd.asked.acquire();
            throw std::runtime_error("the display has gone");
        }
    };
    constexpr unsigned kGenerousSeconds = 60;
    ::alarm(kGenerousSeconds);
    int status = 0;
    const auto streams =
        captureStreams([&] { status = ZPKApplicationRun::run(frontEnd, m_volumes, m_clock); });
    ::alarm(0);
    EXPECT_EQ(status, 1);
    EXPECT_EQ(streams.standardError, "Zephyrkit: the display has gone\n");
}

std::string g_folder;
std::string g_staging;

/// Registered before the run's own exit function, and so called after it.
void checkThatNothingIsLeft() {
    const bool isLeft = fs::exists(g_staging);
    fs::remove_all(g_folder);
    if (isLeft) {
        std::_Exit(24);
    }
}

/// Ends the process out of a modal loop, as a toolkit does that has lost its display.
TEST_F(ZPKApplicationRunTest, ExitOutOfTheLoopLeavesNothing) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    addSetup("setup");
    pack();
    for (const char* const moment : {"modal: begin", "bar: value=10", "bar: value=40", "bar: value=100"}) {
        m_frontEnd.onLog = [moment](const std::string& line) {
            if (line == moment) {
                std::exit(23);
            }
        };
        EXPECT_EXIT(
            {
                g_folder = m_folder.path();
                g_staging = m_staging;
                std::atexit(checkThatNothingIsLeft);
                ZPKApplicationRun::run(m_frontEnd, m_volumes, m_clock);
            },
            ::testing::ExitedWithCode(23), "")
            << moment;
    }
}

}  // namespace
