// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/ChildStep.h"

#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "Tests/Tools/zpkpack/PackagerFixture.h"
#include "Tools/zpkpack/PackagerFailure.h"

using zpk_packager::ChildStep;
using zpk_packager::PackagerFailure;
using zpk_packager::SignalHold;

namespace zpk_test {

namespace {

volatile std::sig_atomic_t caughtSignals = 0;

std::string failureOfStep(const std::function<void()>& step) {
    return failureOf([&] { ChildStep::run(SignalHold(), step); });
}

bool isBlocked(int signal) {
    sigset_t blocked;
    ::sigprocmask(SIG_SETMASK, nullptr, &blocked);
    return ::sigismember(&blocked, signal) == 1;
}

TEST(ChildStepTest, RunsTheStepToItsEnd) {
    const TemporaryFolder folder;
    EXPECT_EQ(failureOfStep([&] { writeFile(folder / "made", std::to_string(::getpid())); }), "");
    EXPECT_NE(readFile(folder / "made"), std::to_string(::getpid()));
}

TEST(ChildStepTest, PassesOnWhatTheStepThrows) {
    const std::string message(100000, 'x');
    EXPECT_EQ(failureOfStep([&] { throw PackagerFailure(message); }), message);
    EXPECT_EQ(failureOfStep([] { throw std::bad_alloc(); }), "std::bad_alloc");
}

TEST(ChildStepTest, TellsHowTheChildDied) {
    EXPECT_EQ(failureOfStep([] { ::raise(SIGKILL); }),
              "the process that packs ended before its time: Killed");
    EXPECT_EQ(failureOfStep([] { ::_exit(0); }), "the process that packs ended before its time");
}

TEST(ChildStepTest, EndsTheStepWhenASignalComesAndLeavesTheSignal) {
    const TemporaryFolder folder;
    struct sigaction caught {};
    caught.sa_handler = [](int) { caughtSignals = caughtSignals + 1; };
    struct sigaction before {};
    ::sigaction(SIGTERM, &caught, &before);
    EXPECT_EQ(failureOf([&] {
                  const SignalHold signals;
                  const std::string failure = failureOf([&] {
                      ChildStep::run(signals, [&] {
                          writeFile(folder / "child", std::to_string(::getpid()));
                          ::kill(::getppid(), SIGTERM);
                          ::pause();
                      });
                  });
                  EXPECT_EQ(caughtSignals, 0) << "it is to wait until all is cleaned up";
                  throw PackagerFailure(failure);
              }),
              "interrupted");
    EXPECT_EQ(caughtSignals, 1);
    EXPECT_EQ(::kill(std::stoi(readFile(folder / "child")), 0), -1) << "the child is still there";
    ::sigaction(SIGTERM, &before, nullptr);
}

TEST(SignalHoldTest, HoldsWhatAsksToEndAndNothingElse) {
    {
        const SignalHold signals;
        EXPECT_TRUE(isBlocked(SIGINT) && isBlocked(SIGTERM) && isBlocked(SIGHUP));
        EXPECT_FALSE(isBlocked(SIGQUIT));
    }
    EXPECT_FALSE(isBlocked(SIGINT) || isBlocked(SIGTERM) || isBlocked(SIGHUP));
}

TEST(SignalHoldTest, WhatTheProcessIgnoresStaysIgnored) {
    ::signal(SIGHUP, SIG_IGN);
    {
        const SignalHold signals;
        EXPECT_FALSE(isBlocked(SIGHUP));
        EXPECT_TRUE(isBlocked(SIGTERM));
    }
    ::signal(SIGHUP, SIG_DFL);
}

}  // namespace

}  // namespace zpk_test
