// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/ZPKMainThreadQueue.h"

#include <utility>

ZPKMainThreadQueue::ZPKMainThreadQueue(std::function<void()> wake)
    : m_wake(std::move(wake)), m_mainThread(std::this_thread::get_id()) {}

ZPKMainThreadQueue::~ZPKMainThreadQueue() {
    close();
    ZPKMutexLock lock(m_mutex);
    while (m_waiting > 0) {
        lock.wait(m_changed);
    }
}

void ZPKMainThreadQueue::post(std::function<void()> action) {
    const ZPKMutexLock lock(m_mutex);
    if (m_closed) {
        return;
    }
    m_entries.push_back({std::move(action), nullptr});
    m_wake();
}

void ZPKMainThreadQueue::performAndWait(const std::function<void()>& action) {
    if (std::this_thread::get_id() == m_mainThread) {
        action();
        return;
    }
    ZPKMutexLock lock(m_mutex);
    if (m_closed) {
        return;
    }
    const auto done = std::make_shared<bool>(false);
    m_entries.push_back({action, done});
    ++m_waiting;
    m_wake();
    while (!*done && !m_closed) {
        lock.wait(m_changed);
    }
    --m_waiting;
    m_changed.notify_all();
}

void ZPKMainThreadQueue::runPending() {
    for (Entry entry; takeNext(entry);) {
        try {
            entry.action();
        } catch (...) {
            markDone(entry.done);
            throw;
        }
        markDone(entry.done);
    }
}

bool ZPKMainThreadQueue::takeNext(Entry& outEntry) {
    const ZPKMutexLock lock(m_mutex);
    if (m_entries.empty()) {
        return false;
    }
    outEntry = std::move(m_entries.front());
    m_entries.pop_front();
    return true;
}

void ZPKMainThreadQueue::close() {
    const ZPKMutexLock lock(m_mutex);
    m_closed = true;
    m_entries.clear();
    m_changed.notify_all();
}

void ZPKMainThreadQueue::markDone(const std::shared_ptr<bool>& done) {
    if (!done) {
        return;
    }
    const ZPKMutexLock lock(m_mutex);
    *done = true;
    m_changed.notify_all();
}
