// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Platform/ZPKEndSignals.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <condition_variable>
#include <csignal>
#include <mutex>
#include <system_error>
#include <utility>

namespace {

void (*handlerOf(int signal))(int) {
    struct sigaction action {};
    ::sigaction(signal, nullptr, &action);
    return action.sa_handler;
}

/// Keeps what it is told.
class Told {
public:
    void operator()(int signal) {
        const std::lock_guard lock(m_mutex);
        m_last = signal;
        m_changed.notify_all();
    }

    int next() {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_last != 0; });
        return std::exchange(m_last, 0);
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    int m_last = 0;
};

TEST(ZPKEndSignalsTest, EachIsToldAndNothingElseHappens) {
    Told told;
    const ZPKEndSignals signals([&told](int signal) { told(signal); });
    for (const int signal : {SIGTERM, SIGINT, SIGHUP, SIGTERM}) {
        ::kill(::getpid(), signal);
        EXPECT_EQ(told.next(), signal);
    }
}

TEST(ZPKEndSignalsTest, AreAsBeforeAfterwards) {
    {
        const ZPKEndSignals signals([](int) {});
        EXPECT_NE(handlerOf(SIGTERM), SIG_DFL);
    }
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        EXPECT_EQ(handlerOf(signal), SIG_DFL);
    }
}

TEST(ZPKEndSignalsTest, WhatThePersonIgnoresStaysIgnored) {
    std::signal(SIGHUP, SIG_IGN);
    Told told;
    {
        const ZPKEndSignals signals([&told](int signal) { told(signal); });
        EXPECT_EQ(handlerOf(SIGHUP), SIG_IGN);
        ::kill(::getpid(), SIGHUP);
        ::kill(::getpid(), SIGINT);
        EXPECT_EQ(told.next(), SIGINT);
    }
    EXPECT_EQ(handlerOf(SIGHUP), SIG_IGN);
}

TEST(ZPKEndSignalsTest, OneAfterAnother) {
    for (int turn = 0; turn < 100; ++turn) {
        Told told;
        const ZPKEndSignals signals([&told](int signal) { told(signal); });
        ::raise(SIGTERM);
        EXPECT_EQ(told.next(), SIGTERM);
    }
}

TEST(ZPKEndSignalsTest, WithoutAThreadItIsAnException) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            // Root has no limit of processes.
            if (::geteuid() == 0 && ::setuid(65534) != 0) {
                ::_exit(1);
            }
            const rlimit none{};
            ::setrlimit(RLIMIT_NPROC, &none);
            try {
                const ZPKEndSignals signals([](int) {});
            } catch (const std::system_error&) {
                ::_exit(handlerOf(SIGTERM) == SIG_DFL ? 23 : 2);
            }
            ::_exit(3);
        },
        ::testing::ExitedWithCode(23), "");
}

}  // namespace
