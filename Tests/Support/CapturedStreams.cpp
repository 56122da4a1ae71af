// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tests/Support/CapturedStreams.h"

#include <gtest/gtest.h>

namespace zpk_test {

CapturedStreams captureStreams(const std::function<void()>& action) {
    ::testing::internal::CaptureStdout();
    ::testing::internal::CaptureStderr();
    action();
    CapturedStreams captured;
    captured.standardOutput = ::testing::internal::GetCapturedStdout();
    captured.standardError = ::testing::internal::GetCapturedStderr();
    return captured;
}

}  // namespace zpk_test
