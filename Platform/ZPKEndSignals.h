// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <atomic>
#include <functional>
#include <thread>

/// Tells of the signals by which a person or the system asks a process to end (SIGTERM, SIGINT, SIGHUP). As
/// long as an object is there, they do nothing else. Those that were ignored before stay ignored, and child
/// processes find all of them as they were. One object at a time; main thread only.
class ZPKEndSignals {
public:
    /// `tell` is called with a signal's number on a thread of this object; of signals that come while it
    /// runs, one counts. Throws std::system_error when the host gives no thread.
    explicit ZPKEndSignals(std::function<void(int)> tell);

    /// Waits for a call of `tell` that runs.
    ~ZPKEndSignals();
    ZPKEndSignals(const ZPKEndSignals&) = delete;
    ZPKEndSignals& operator=(const ZPKEndSignals&) = delete;

private:
    void tellOfEach();

    const std::function<void(int)> m_tell;
    std::atomic<bool> m_isOver{false};
    std::thread m_thread;
};
