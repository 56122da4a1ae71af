// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "InstallerCore/ZPKSetupProgramRunner.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <csignal>
#include <filesystem>

#include "Tests/Platform/ScopedEnvironment.h"
#include "Tests/Support/CapturedStreams.h"
#include "Tests/Support/TemporaryFolder.h"

using zpk_test::readFile;
using zpk_test::ScopedEnvironment;
using zpk_test::TemporaryFolder;
using Lines = std::vector<std::string>;

namespace {

class ZPKSetupProgramRunnerTest : public ::testing::Test {
protected:
    TemporaryFolder m_folder;
    ScopedEnvironment m_record{"ZPK_TEST_RECORD", m_folder / "record"};
};

TEST_F(ZPKSetupProgramRunnerTest, NothingToExecuteDoesNothing) {
    EXPECT_TRUE(ZPKSetupProgramRunner::run({std::nullopt, Lines{"x"}}, true));
}

TEST_F(ZPKSetupProgramRunnerTest, ExecuteWaitsAndPassesEachArgumentAsItIs) {
    EXPECT_TRUE(ZPKSetupProgramRunner::run({ZPK_TEST_SETUP, Lines{"-a -b", "", "'\"$x\n"}}, true));
    EXPECT_EQ(readFile(m_folder / "record"), std::string(ZPK_TEST_SETUP) + "\n[-a -b]\n[]\n['\"$x\n]\n");
}

TEST_F(ZPKSetupProgramRunnerTest, ExecuteWithoutParametersPassesNone) {
    EXPECT_TRUE(ZPKSetupProgramRunner::run({ZPK_TEST_SETUP, std::nullopt}, true));
    EXPECT_EQ(readFile(m_folder / "record"), std::string(ZPK_TEST_SETUP) + "\n");
}

TEST_F(ZPKSetupProgramRunnerTest, ProgramThatCannotStartIsTheFailureAndSaysNothing) {
    const auto streams = zpk_test::captureStreams([this] {
        const ZPKOutcome outcome = ZPKSetupProgramRunner::run({m_folder / "none", std::nullopt}, true);
        ASSERT_FALSE(outcome);
        EXPECT_EQ(outcome.failure().message(), (m_folder / "none") + ": No such file or directory");
    });
    EXPECT_EQ(streams.standardOutput + streams.standardError, "");
}

TEST_F(ZPKSetupProgramRunnerTest, TextThatAShellWouldRunIsGivenToNone) {
    zpk_test::writeFile(m_folder / "setup", ": > '" + (m_folder / "record") + "'\n");
    ::chmod((m_folder / "setup").c_str(), 0755);
    EXPECT_FALSE(ZPKSetupProgramRunner::run({m_folder / "setup", Lines{"x"}}, true));
    EXPECT_FALSE(std::filesystem::exists(m_folder / "record"));
}

TEST_F(ZPKSetupProgramRunnerTest, WithTheFlagOnTheProgramHasEndedAfterwards) {
    const std::string number = m_folder / "number";
    EXPECT_TRUE(ZPKSetupProgramRunner::run({"/bin/sh", Lines{"-c", "echo $$ > '" + number + "'"}}, true));
    ASSERT_TRUE(std::filesystem::exists(number));
    // One that has ended and is not waited for keeps its number.
    EXPECT_NE(::kill(std::stoi(readFile(number)), 0), 0);
}

TEST_F(ZPKSetupProgramRunnerTest, WithTheFlagOffTheProgramIsNotWaitedFor) {
    // A FIFO that nobody reads holds the program until this test does: waited for, it would never end.
    const std::string fifo = m_folder / "fifo";
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    EXPECT_TRUE(ZPKSetupProgramRunner::run({"/bin/sh", Lines{"-c", "echo ran > '" + fifo + "'"}}, false));
    EXPECT_EQ(readFile(fifo), "ran\n");
    ::wait(nullptr);
}

}  // namespace
