// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Base/ZPKClock.h"

#include <thread>

void ZPKSystemClock::sleepFor(std::chrono::milliseconds duration) {
    std::this_thread::sleep_for(duration);
}
