// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <functional>
#include <string>

namespace zpk_test {

/// What a piece of code wrote on the standard streams, whatever way it wrote.
struct CapturedStreams {
    std::string standardOutput;
    std::string standardError;
};

/// Runs `action` with standard output and standard error (descriptors 1 and 2) sent into files.
CapturedStreams captureStreams(const std::function<void()>& action);

}  // namespace zpk_test
