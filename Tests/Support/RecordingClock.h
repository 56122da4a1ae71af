// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <vector>

#include "Base/ZPKClock.h"

namespace zpk_test {

/// Time that does not pass: writes down the pauses. One thread uses one.
class RecordingClock : public ZPKClock {
public:
    std::vector<std::chrono::milliseconds> pauses;

    void sleepFor(std::chrono::milliseconds duration) override { pauses.push_back(duration); }
};

}  // namespace zpk_test
