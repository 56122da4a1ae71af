// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Base/ZPKClock.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <string>

#include "Tests/Support/TemporaryFolder.h"

namespace {

/// The letter by which the kernel tells what a process does.
char stateOf(pid_t process) {
    const std::string status = zpk_test::readFile("/proc/" + std::to_string(process) + "/stat");
    const std::size_t name = status.rfind(") ");
    return name == std::string::npos ? '?' : status[name + 2];
}

TEST(ZPKClockTest, TheSystemsPauses) {
    const pid_t child = ::fork();
    if (child == 0) {
        ZPKSystemClock().sleepFor(std::chrono::hours(1));
        ::_exit(0);
    }
    char state = stateOf(child);
    while (state == 'R' || state == 'D') {
        state = stateOf(child);
    }
    EXPECT_EQ(state, 'S');
    ::kill(child, SIGKILL);
    int status = 0;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFSIGNALED(status));
}

}  // namespace
