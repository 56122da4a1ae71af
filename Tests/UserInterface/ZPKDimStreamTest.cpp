// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/Terminal/ZPKDimStream.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <optional>

#include "Base/ZPKDiagnostic.h"
#include "Tests/Support/CapturedStreams.h"

namespace zpk_test {

TEST(ZPKDimStream, WhatThisProcessWritesIsDimAndItsLinesEndUndimmed) {
    const CapturedStreams streams = captureStreams([] {
        std::fputs("before\n", stderr);
        {
            const ZPKDimStream error(stderr, STDERR_FILENO);
            const ZPKDimStream output(stdout, STDOUT_FILENO);
            ZPKDiagnostic::tell({"o", "ne"});
            std::fputs("two\n", stderr);
            std::fprintf(stdout, "%s\n", "three");
            EXPECT_EQ(::write(STDERR_FILENO, "another's\n", 10), 10);
            std::fputs("half", stderr);
        }
        std::fputs("after\n", stderr);
        std::fprintf(stdout, "after\n");
    });
    EXPECT_EQ(streams.standardError,
              "before\n\x1b[2mZephyrkit: one\x1b[22m\n\x1b[2mtwo\x1b[22m\nanother's\n\x1b[2mhalf\x1b[22m"
              "after\n");
    EXPECT_EQ(streams.standardOutput, "\x1b[2mthree\x1b[22m\nafter\n");
}

TEST(ZPKDimStream, AnEmptyStretchChangesNothing) {
    const CapturedStreams streams = captureStreams([] {
        FILE* const before = stderr;
        std::optional<ZPKDimStream> error(std::in_place, stderr, STDERR_FILENO);
        EXPECT_NE(stderr, before);
        error.reset();
        EXPECT_EQ(stderr, before);
    });
    EXPECT_EQ(streams.standardError, "");
}

}  // namespace zpk_test
