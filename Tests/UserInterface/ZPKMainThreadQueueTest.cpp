// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/ZPKMainThreadQueue.h"

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <memory>
#include <stdexcept>
#include <string>

namespace {

using namespace std::chrono_literals;

class ZPKMainThreadQueueTest : public ::testing::Test {
protected:
    /// Another thread hands the action over; returns when it has done so and waits.
    std::future<void> hand(std::function<void()> action) {
        m_handed = std::promise<void>();
        std::future<void> done =
            std::async(std::launch::async, [this, action] { m_queue->performAndWait(action); });
        m_handed.get_future().wait();
        return done;
    }

    static bool ends(const std::future<void>& thread) {
        return thread.wait_for(60s) == std::future_status::ready;
    }

    std::promise<void> m_handed;
    std::unique_ptr<ZPKMainThreadQueue> m_queue =
        std::make_unique<ZPKMainThreadQueue>([this] { m_handed.set_value(); });
};

TEST_F(ZPKMainThreadQueueTest, ActionThatThrowsReachesTheMainThreadAndLetsItsOwnGo) {
    const std::future<void> thread = hand([] { throw std::runtime_error("no memory"); });
    EXPECT_THROW(m_queue->runPending(), std::runtime_error);
    EXPECT_TRUE(ends(thread));
    m_queue->close();
}

TEST_F(ZPKMainThreadQueueTest, WhatComesAfterAnActionThatThrowsRunsTheNextTime) {
    std::string ran;
    m_queue->post([] { throw std::runtime_error("no memory"); });
    m_handed = std::promise<void>();
    m_queue->post([&] { ran += "second"; });
    EXPECT_THROW(m_queue->runPending(), std::runtime_error);
    EXPECT_EQ(ran, "");
    m_queue->runPending();
    EXPECT_EQ(ran, "second");
    m_queue->runPending();
    EXPECT_EQ(ran, "second");
}

TEST_F(ZPKMainThreadQueueTest, ThreadGoesOnOnlyAfterItsAction) {
    bool hasRun = false;
    const std::future<void> thread = hand([&] { hasRun = true; });
    EXPECT_EQ(thread.wait_for(0s), std::future_status::timeout);
    EXPECT_FALSE(hasRun);
    m_queue->runPending();
    EXPECT_TRUE(hasRun);
    EXPECT_TRUE(ends(thread));
    m_queue->close();
}

TEST_F(ZPKMainThreadQueueTest, NothingRunsOnceItIsClosed) {
    bool hasRun = false;
    const auto action = [&] { hasRun = true; };
    const std::future<void> thread = hand(action);
    m_queue->close();
    EXPECT_TRUE(ends(thread));
    m_queue->post(action);
    EXPECT_TRUE(ends(std::async(std::launch::async, [&] { m_queue->performAndWait(action); })));
    m_queue->runPending();
    EXPECT_FALSE(hasRun);
}

}  // namespace
