// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <thread>

#include "Base/ZPKMutex.h"

/// The actions that other threads hand to the main thread, which runs them in their order.
class ZPKMainThreadQueue {
public:
    /// The calling thread is the main thread. `wake` is called, on whichever thread hands an action
    /// over, to make the main thread call `runPending` soon; it must not call back into the queue.
    explicit ZPKMainThreadQueue(std::function<void()> wake);

    /// Closes the queue and waits until no thread is inside `performAndWait`.
    ~ZPKMainThreadQueue();
    ZPKMainThreadQueue(const ZPKMainThreadQueue&) = delete;
    ZPKMainThreadQueue& operator=(const ZPKMainThreadQueue&) = delete;

    /// Hands over `action` and returns at once. Any thread.
    void post(std::function<void()> action) ZPK_EXCLUDES(m_mutex);

    /// Runs `action` on the main thread and returns when it has run; on the main thread, runs it
    /// directly. Once the queue is closed the action is left out. Any thread.
    void performAndWait(const std::function<void()>& action) ZPK_EXCLUDES(m_mutex);

    /// Runs what is waiting. An action may call this again. Main thread only.
    void runPending() ZPK_EXCLUDES(m_mutex);

    /// Leaves out what is waiting and what still comes, and lets the threads that wait go on, even the
    /// one whose action is calling this. Main thread only.
    void close() ZPK_EXCLUDES(m_mutex);

private:
    struct Entry {
        std::function<void()> action;
        /// For the thread that waits, which goes on without the answer when the queue is closed while
        /// the action runs. Touched only while the mutex is held; null when nobody waits.
        std::shared_ptr<bool> done;
    };

    bool takeNext(Entry& outEntry) ZPK_EXCLUDES(m_mutex);
    void markDone(const std::shared_ptr<bool>& done) ZPK_EXCLUDES(m_mutex);

    const std::function<void()> m_wake;
    const std::thread::id m_mainThread;
    ZPKMutex m_mutex;
    std::condition_variable m_changed;
    std::deque<Entry> m_entries ZPK_GUARDED_BY(m_mutex);
    std::size_t m_waiting ZPK_GUARDED_BY(m_mutex) = 0;
    bool m_closed ZPK_GUARDED_BY(m_mutex) = false;
};
