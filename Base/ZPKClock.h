// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <chrono>

/// Time as the program's pauses see it; a test gives one that does not wait. May be used from any
/// thread.
class ZPKClock {
public:
    virtual ~ZPKClock() = default;

    /// Blocks the calling thread for that long.
    virtual void sleepFor(std::chrono::milliseconds duration) = 0;
};

/// The machine's own time.
class ZPKSystemClock final : public ZPKClock {
public:
    void sleepFor(std::chrono::milliseconds duration) override;
};
