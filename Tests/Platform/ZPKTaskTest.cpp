// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Platform/ZPKTask.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <thread>

#include "Platform/ZPKEndSignals.h"
#include "Platform/ZPKIgnoredSignals.h"
#include "Tests/Platform/DefaultSignals.h"
#include "Tests/Platform/ScopedEnvironment.h"
#include "Tests/Support/CapturedStreams.h"
#include "Tests/Support/TemporaryFolder.h"

namespace {

using zpk_test::captureStreams;
using zpk_test::DefaultSignals;
using zpk_test::readFile;
using zpk_test::ScopedEnvironment;
using zpk_test::TemporaryFolder;
using zpk_test::writeFile;

/// Runs the probe and reads its report.
class ZPKTaskTest : public ::testing::Test {
protected:
    void run(const std::vector<std::string>& arguments = {}) {
        m_task.setLaunchPath(ZPK_PROBE_TOOL);
        m_task.setArguments(arguments);
        m_streams = captureStreams([this] {
            EXPECT_TRUE(m_task.launch());
            m_task.waitUntilExit();
        });
    }

    std::string line(const std::string& name) const {
        const std::string report = readFile(m_report);
        const std::size_t start = report.find("\n" + name + " ");
        EXPECT_NE(start, std::string::npos) << report;
        const std::size_t value = start + name.size() + 2;
        return report.substr(value, report.find('\n', value) - value);
    }

    DefaultSignals m_signals;
    TemporaryFolder m_folder;
    std::string m_report = m_folder / "report";
    ScopedEnvironment m_environment{"ZPK_PROBE_REPORT", m_report};
    ZPKTask m_task;
    zpk_test::CapturedStreams m_streams;
};

TEST_F(ZPKTaskTest, ArgumentsReachTheChildAsTheyAre) {
    const std::vector<std::string> arguments = {
        "-a -b", "",      "it's \"quoted\"", "two\nlines", "\xFF\xFE",
        "*",     "$HOME", "; echo no",       "\\",         "\xE6\x97\xA5"};
    run(arguments);
    std::string expected = "arguments\n";
    for (const std::string& argument : arguments) {
        expected += argument + '\0';
    }
    EXPECT_EQ(readFile(m_report).substr(0, expected.size() + 8), expected + "\nfolder ");
    EXPECT_EQ(m_task.terminationStatus(), 0);
}

TEST_F(ZPKTaskTest, NoArgumentsMeansNone) {
    run();
    EXPECT_TRUE(readFile(m_report).starts_with("arguments\n\nfolder "));
}

TEST_F(ZPKTaskTest, WorkingFolderAndStreamsAreInherited) {
    ASSERT_EQ(::chdir(m_folder.path().c_str()), 0);
    run();
    EXPECT_EQ(line("folder"), m_folder.path());
    EXPECT_EQ(m_streams.standardOutput, "probe output\n");
    EXPECT_EQ(m_streams.standardError, "probe error\n");
}

TEST_F(ZPKTaskTest, DescriptorsOfTheParentAreClosedInTheChild) {
    const int low = ::open("/dev/null", O_RDONLY);
    ASSERT_GE(::dup2(low, 200), 0);
    run();
    EXPECT_EQ(line("descriptors"), "0 1 2 ");
    ::close(200);
    ::close(low);
}

TEST_F(ZPKTaskTest, SignalsThatThePersonIgnoresStayIgnored) {
    std::signal(SIGPIPE, SIG_IGN);
    ZPKIgnoredSignals::ignoreThoseOfWrites();
    run();
    EXPECT_EQ(line("signals"), "changed " + std::to_string(SIGPIPE) + " ");
    std::signal(SIGPIPE, SIG_DFL);
    std::signal(SIGHUP, SIG_IGN);
    ZPKIgnoredSignals::ignoreThoseOfWrites();
    run();
    std::signal(SIGHUP, SIG_DFL);
    EXPECT_EQ(line("signals"), "changed " + std::to_string(SIGHUP) + " ");
}

TEST_F(ZPKTaskTest, HandlersAndBlockedSignalsOfTheParentAreNotInherited) {
    const ZPKEndSignals handled([](int) {});
    sigset_t blocked;
    sigfillset(&blocked);
    ASSERT_EQ(::pthread_sigmask(SIG_BLOCK, &blocked, nullptr), 0);
    run();
    ::pthread_sigmask(SIG_UNBLOCK, &blocked, nullptr);
    EXPECT_EQ(line("signals"), "");
}

TEST_F(ZPKTaskTest, UnreadPipeSwallowsStandardErrorAlone) {
    m_task.setStandardErrorToUnreadPipe();
    run();
    EXPECT_EQ(m_streams.standardOutput, "probe output\n");
    EXPECT_EQ(m_streams.standardError, "");
    EXPECT_TRUE(line("errors").starts_with("pipe:")) << line("errors");
    EXPECT_EQ(line("descriptors"), "0 1 2 ");
    EXPECT_EQ(m_task.terminationStatus(), 0);
}

TEST_F(ZPKTaskTest, UnreadPipeWorksWithClosedStandardStreams) {
    const pid_t child = ::fork();
    if (child == 0) {
        ::close(0);
        ::close(1);
        ::close(2);
        m_task.setLaunchPath(ZPK_PROBE_TOOL);
        m_task.setStandardErrorToUnreadPipe();
        const bool launched = static_cast<bool>(m_task.launch());
        m_task.waitUntilExit();
        ::_exit(launched ? m_task.terminationStatus() : 99);
    }
    int status = -1;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_TRUE(line("errors").starts_with("pipe:")) << line("errors");
}

TEST_F(ZPKTaskTest, WaitOutlastsInterruptions) {
    const ScopedEnvironment slow("ZPK_PROBE_END", "slow");
    struct sigaction action {};
    action.sa_handler = [](int) {};
    ::sigaction(SIGUSR1, &action, nullptr);
    const pthread_t waiter = ::pthread_self();
    std::thread interrupter([waiter] {
        for (int count = 0; count < 20; ++count) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
            ::pthread_kill(waiter, SIGUSR1);
        }
    });
    run();
    EXPECT_TRUE(std::filesystem::exists(m_report + ".end"));
    interrupter.join();
}

TEST_F(ZPKTaskTest, TerminationStatusTellsExitAndSignal) {
    {
        const ScopedEnvironment end("ZPK_PROBE_END", "37");
        run();
        EXPECT_EQ(m_task.terminationStatus(), 37);
        EXPECT_EQ(m_task.terminationSignal(), 0);
    }
    const ScopedEnvironment end("ZPK_PROBE_END", "signal");
    run();
    EXPECT_EQ(m_task.terminationStatus(), 128 + SIGKILL);
    EXPECT_EQ(m_task.terminationSignal(), SIGKILL);
}

TEST_F(ZPKTaskTest, FailedLaunchTellsWhy) {
    writeFile(m_folder / "plain", "#!/bin/sh\n");
    ::chmod((m_folder / "plain").c_str(), 0644);
    writeFile(m_folder / "noformat", "neither program nor script");
    ::chmod((m_folder / "noformat").c_str(), 0755);
    struct Row {
        std::string path;
        std::string reason;
    };
    const Row rows[] = {{m_folder / "missing", "No such file or directory"},
                        {m_folder / "plain", "Not executable"},
                        {m_folder.path(), "Is a directory"},
                        {m_folder / "noformat", "Neither a program nor a script that names its interpreter"},
                        {"", "No such file or directory"},
                        {"true", "No such file or directory"}};
    for (const Row& row : rows) {
        ZPKTask task;
        task.setLaunchPath(row.path);
        task.setStandardErrorToUnreadPipe();
        const ZPKOutcome outcome = task.launch();
        ASSERT_FALSE(outcome) << row.path;
        EXPECT_EQ(outcome.failure().path(), row.path);
        EXPECT_EQ(outcome.failure().reason(), row.reason) << row.path;
        task.waitUntilExit();
    }
}

TEST_F(ZPKTaskTest, FailedLaunchWithoutDescriptorsTellsWhy) {
    std::vector<int> taken;
    for (int descriptor; (descriptor = ::dup(0)) >= 0;) {
        taken.push_back(descriptor);
    }
    m_task.setLaunchPath(ZPK_PROBE_TOOL);
    m_task.setStandardErrorToUnreadPipe();
    const ZPKOutcome outcome = m_task.launch();
    for (const int descriptor : taken) {
        ::close(descriptor);
    }
    ASSERT_FALSE(outcome);
    EXPECT_EQ(outcome.failure().message(), ZPK_PROBE_TOOL ": Too many open files");
}

TEST_F(ZPKTaskTest, WaitWithIgnoredChildrenStillWaits) {
    const ScopedEnvironment slow("ZPK_PROBE_END", "slow");
    std::signal(SIGCHLD, SIG_IGN);
    run();
    std::signal(SIGCHLD, SIG_DFL);
    EXPECT_TRUE(std::filesystem::exists(m_report + ".end"));
}

TEST_F(ZPKTaskTest, TasksRunOnAnyThread) {
    std::vector<std::thread> threads;
    std::vector<int> statuses(8, -1);
    for (int& status : statuses) {
        threads.emplace_back([&status] {
            ZPKTask task;
            task.setLaunchPath("/bin/true");
            task.setStandardErrorToUnreadPipe();
            if (task.launch()) {
                task.waitUntilExit();
                status = task.terminationStatus();
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(statuses, std::vector<int>(8, 0));
}

TEST_F(ZPKTaskTest, EntriesTakeThePlaceOfThoseOfTheirNameAlone) {
    const ScopedEnvironment older("ZPK_TEST_ENTRY", "older");
    const ScopedEnvironment longer("ZPK_TEST_ENTRY_LONGER", "stays");
    const auto printed = [](const std::vector<std::string>& entries) {
        return captureStreams([&] {
                   ZPKTask task;
                   task.setLaunchPath("/usr/bin/env");
                   task.setEnvironmentEntries(entries);
                   EXPECT_TRUE(task.launch());
                   task.waitUntilExit();
               })
            .standardOutput;
    };
    std::string expected = printed({});
    const std::string taken = "ZPK_TEST_ENTRY=older\n";
    ASSERT_NE(expected.find(taken), std::string::npos);
    expected.erase(expected.find(taken), taken.size());
    EXPECT_NE(expected.find("ZPK_TEST_ENTRY_LONGER=stays\n"), std::string::npos);
    EXPECT_EQ(printed({"ZPK_TEST_ENTRY=newer = a", "ZPK_TEST_OTHER="}),
              expected + "ZPK_TEST_ENTRY=newer = a\nZPK_TEST_OTHER=\n");
}

TEST_F(ZPKTaskTest, ParentIsNamedOnlyToAChildThatEndsWithIt) {
    const std::string print = std::string("echo \"<$") + ZPKTask::kParentVariable + ">\"";
    const ScopedEnvironment older(ZPKTask::kParentVariable, "1");
    const auto printed = [&print](bool endsWithItsParent) {
        return captureStreams([&] {
                   ZPKTask task;
                   task.setLaunchPath("/bin/sh");
                   task.setArguments({"-c", print});
                   if (endsWithItsParent) {
                       task.setEndsWithItsParent();
                   }
                   EXPECT_TRUE(task.launch());
                   task.waitUntilExit();
               })
            .standardOutput;
    };
    EXPECT_EQ(printed(true), "<" + std::to_string(::getpid()) + ">\n");
    EXPECT_EQ(printed(false), "<1>\n");
}

// Ended from outside

TEST_F(ZPKTaskTest, TerminatedChildIsWaitedForNoLonger) {
    m_task.setLaunchPath("/bin/sleep");
    // Longer than the test may take.
    m_task.setArguments({"600"});
    ASSERT_TRUE(m_task.launch());
    std::thread other([this] { m_task.terminate(); });
    m_task.waitUntilExit();
    other.join();
    EXPECT_EQ(m_task.terminationStatus(), 128 + SIGKILL);
}

TEST_F(ZPKTaskTest, ChildThatRefusesSignalsIsTerminatedToo) {
    const std::string ready = m_folder / "ready";
    m_task.setLaunchPath("/bin/sh");
    m_task.setArguments({"-c", "trap '' TERM INT HUP; : > '" + ready + "'; while :; do :; done"});
    ASSERT_TRUE(m_task.launch());
    while (!std::filesystem::exists(ready)) {
        std::this_thread::yield();
    }
    m_task.terminate();
    m_task.waitUntilExit();
    EXPECT_EQ(m_task.terminationStatus(), 128 + SIGKILL);
}

TEST_F(ZPKTaskTest, NothingIsLaunchedAfterTheEnd) {
    m_task.setLaunchPath("/bin/true");
    m_task.terminate();
    const ZPKOutcome outcome = m_task.launch();
    ASSERT_FALSE(outcome);
    EXPECT_EQ(outcome.failure().reason(), ZPKFailure::systemReason(ECANCELED));
    m_task.waitUntilExit();
}

TEST_F(ZPKTaskTest, EndOfATaskWhoseChildIsGoneReachesNobody) {
    m_task.setLaunchPath("/bin/true");
    ASSERT_TRUE(m_task.launch());
    m_task.waitUntilExit();
    m_task.terminate();
    EXPECT_EQ(m_task.terminationStatus(), 0);
}

}  // namespace
