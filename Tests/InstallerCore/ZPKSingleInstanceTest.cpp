// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "InstallerCore/ZPKSingleInstance.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <deque>
#include <filesystem>
#include <functional>
#include <numeric>
#include <optional>

#include "Platform/ZPKNamedLock.h"
#include "Tests/InstallerCore/ZPKCoreFixture.h"

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using zpk_test::TestBundle;
using zpk_test::writeFile;

namespace {

/// Time that does not pass, in which something happens at each pause.
class EventfulClock : public zpk_test::RecordingClock {
public:
    std::function<void()> atPause = [] {};

    void sleepFor(std::chrono::milliseconds duration) override {
        RecordingClock::sleepFor(duration);
        atPause();
    }
};

class ZPKSingleInstanceTest : public zpk_test::ZPKCoreFixture {
protected:
    bool isOtherRunning() {
        return m_instance.isOtherRunning(m_pauses, [this] { return m_isAskedToEnd; });
    }

    /// How long it was waited for others to end.
    std::chrono::milliseconds waited() const {
        return std::accumulate(m_pauses.pauses.begin(), m_pauses.pauses.end(), std::chrono::milliseconds(0));
    }

    /// What another launcher of the name holds.
    ZPKNamedLock m_lockOfAnother;
    EventfulClock m_pauses;
    bool m_isAskedToEnd = false;
    ZPKSingleInstance m_instance;
};

/// A process whose executable lies in a bundle of that name, alive as long as this object.
class RunningCopy {
public:
    RunningCopy(const std::string& bundle, const std::string& name, const std::string& strings = "") {
        writeFile(bundle + "/Contents/Info.plist",
                  "<plist><dict><key>CFBundleName</key><string>" + name + "</string></dict></plist>");
        if (!strings.empty()) {
            writeFile(bundle + "/Contents/Resources/InfoPlist.strings",
                      "\"CFBundleName\" = \"" + strings + "\";");
        }
        const std::string program = bundle + "/Contents/Linux/Program";
        fs::create_directories(bundle + "/Contents/Linux");
        fs::copy_file("/bin/sleep", program);
        m_child = fork();
        if (m_child == 0) {
            execl(program.c_str(), program.c_str(), "60", nullptr);
            _exit(127);
        }
        while (fs::read_symlink("/proc/" + std::to_string(m_child) + "/exe").filename() != "Program") {
            usleep(1000);
        }
    }
    ~RunningCopy() { end(); }
    RunningCopy(const RunningCopy&) = delete;
    RunningCopy& operator=(const RunningCopy&) = delete;

    void end() {
        if (m_child > 0) {
            kill(m_child, SIGKILL);
            waitpid(m_child, nullptr, 0);
        }
        m_child = -1;
    }

private:
    pid_t m_child = -1;
};

TEST_F(ZPKSingleInstanceTest, AloneRuns) {
    EXPECT_FALSE(isOtherRunning());
}

TEST_F(ZPKSingleInstanceTest, SecondCopyEndsInSilenceBeforeStaging) {
    const RunningCopy other(m_folder / "Other.app", TestBundle::name());
    writeFile(m_staging + "/of the other", "");
    pack();
    m_frontEnd.run(m_core);
    EXPECT_EQ(m_frontEnd.log().back(), "terminate");
    EXPECT_EQ(logged({"activate", "alert", "progress"}), Lines{});
    EXPECT_TRUE(fs::exists(m_staging + "/of the other"));
}

TEST_F(ZPKSingleInstanceTest, WithoutTheLockEndsAtOnce) {
    ASSERT_TRUE(m_lockOfAnother.take(TestBundle::name()));
    const RunningCopy other(m_folder / "Other.app", TestBundle::name());
    EXPECT_TRUE(isOtherRunning());
    EXPECT_EQ(waited(), 0ms);
}

TEST_F(ZPKSingleInstanceTest, WithoutTheLockGoesOnWhereNobodyIsSeen) {
    ASSERT_TRUE(m_lockOfAnother.take(TestBundle::name()));
    EXPECT_FALSE(isOtherRunning());
    EXPECT_EQ(waited(), 0ms);
}

TEST_F(ZPKSingleInstanceTest, WithTheLockLetsTheOthersEnd) {
    std::deque<RunningCopy> others;
    for (const char* const bundle : {"A.app", "B.app", "C.app"}) {
        others.emplace_back(m_folder / bundle, TestBundle::name());
    }
    // The last of them is about to end only after more than two seconds.
    m_pauses.atPause = [&] {
        if (waited() % 1500ms == 0ms) {
            others.front().end();
            others.pop_front();
        }
    };
    EXPECT_FALSE(isOtherRunning());
    EXPECT_EQ(waited(), 4500ms);
}

TEST_F(ZPKSingleInstanceTest, WithTheLockEndsWhereOneStays) {
    RunningCopy leaves(m_folder / "A.app", TestBundle::name());
    const RunningCopy stays(m_folder / "B.app", TestBundle::name());
    m_pauses.atPause = [&] {
        if (waited() == 500ms) {
            leaves.end();
        }
    };
    EXPECT_TRUE(isOtherRunning());
    EXPECT_EQ(waited(), 2500ms);
}

TEST_F(ZPKSingleInstanceTest, WithTheLockWaitsForNobodyWhoComesLater) {
    RunningCopy first(m_folder / "A.app", TestBundle::name());
    std::optional<RunningCopy> later;
    m_pauses.atPause = [&] {
        later.emplace(m_folder / "B.app", TestBundle::name());
        first.end();
    };
    EXPECT_FALSE(isOtherRunning());
    EXPECT_EQ(waited(), 50ms);
}

TEST_F(ZPKSingleInstanceTest, LockIsHeldUntilTheEnd) {
    {
        ZPKSingleInstance instance;
        EXPECT_FALSE(instance.isOtherRunning(m_pauses, [] { return false; }));
        EXPECT_FALSE(m_lockOfAnother.take(TestBundle::name()));
    }
    EXPECT_TRUE(m_lockOfAnother.take(TestBundle::name()));
}

TEST_F(ZPKSingleInstanceTest, AskedToEndWaitsNoLonger) {
    const RunningCopy other(m_folder / "Other.app", TestBundle::name());
    m_pauses.atPause = [&] { m_isAskedToEnd = waited() == 100ms; };
    EXPECT_TRUE(isOtherRunning());
    EXPECT_EQ(waited(), 100ms);
}

TEST_F(ZPKSingleInstanceTest, AskedToEndTheRunEndsWithTheSignalsStatus) {
    const RunningCopy other(m_folder / "Other.app", TestBundle::name());
    EventfulClock clock;
    ZPKCore core(m_frontEnd, m_volumes, clock);
    clock.atPause = [&] { EXPECT_TRUE(core.askForEnd(SIGTERM)); };
    m_frontEnd.run(core);
    EXPECT_EQ(clock.pauses.size(), 1u);
    EXPECT_EQ(core.exitStatus(), 128 + SIGTERM);
    EXPECT_EQ(logged({"activate", "alert", "progress"}), Lines{});
}

TEST_F(ZPKSingleInstanceTest, OtherNamesMayRun) {
    const RunningCopy longer(m_folder / "A.app", TestBundle::name() + "2");
    const RunningCopy capitals(m_folder / "B.app", "t" + TestBundle::name().substr(1));
    EXPECT_FALSE(isOtherRunning());
}

TEST_F(ZPKSingleInstanceTest, LocalizedNameOfTheOtherCounts) {
    const RunningCopy other(m_folder / "Other.app", "Whatever", TestBundle::name());
    EXPECT_TRUE(isOtherRunning());
}

TEST_F(ZPKSingleInstanceTest, TopLevelStringsFileNamesThisOne) {
    writeFile(m_bundle.resource("InfoPlist.strings"),
              "CFBundleName = \"Einrichtung für Grün" + std::to_string(getpid()) + "\";");
    const RunningCopy identifier(m_folder / "A.app", TestBundle::name());
    EXPECT_FALSE(isOtherRunning());
    const RunningCopy same(m_folder / "B.app", "Einrichtung für Grün" + std::to_string(getpid()));
    EXPECT_TRUE(isOtherRunning());
}

TEST_F(ZPKSingleInstanceTest, StringsFileWithoutNameFallsBackToTheIdentifier) {
    writeFile(m_bundle.resource("InfoPlist.strings"), "Other = \"x\";");
    const RunningCopy other(m_folder / "A.app", TestBundle::name());
    EXPECT_TRUE(isOtherRunning());
}

TEST_F(ZPKSingleInstanceTest, IdentifierWithoutADotNamesNothing) {
    writeFile(m_bundle.path() + "/Contents/Info.plist", "<plist><dict><key>CFBundleIdentifier</key><string>" +
                                                            TestBundle::name() + "</string></dict></plist>");
    const RunningCopy other(m_folder / "A.app", TestBundle::name());
    EXPECT_FALSE(isOtherRunning());
}

}  // namespace
