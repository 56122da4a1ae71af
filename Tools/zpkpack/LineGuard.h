// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <signal.h>

#include <array>

namespace zpk_packager {

class ProgressSurface;

/// While it is there, a signal that ends the program (SIGINT, SIGTERM, SIGHUP) takes the terminal's line of
/// progress away first. Signals that the process ignores stay ignored. One at a time, on the main thread.
class LineGuard {
public:
    explicit LineGuard(const ProgressSurface& surface);
    ~LineGuard();
    LineGuard(const LineGuard&) = delete;
    LineGuard& operator=(const LineGuard&) = delete;

private:
    static constexpr std::array<int, 3> kSignals = {SIGINT, SIGTERM, SIGHUP};

    const bool m_isNeeded;
    std::array<struct sigaction, kSignals.size()> m_before{};
};

}  // namespace zpk_packager
