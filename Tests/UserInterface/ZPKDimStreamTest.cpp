// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/Terminal/ZPKDimStream.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <iostream>
#include <optional>

#include "Tests/Support/CapturedStreams.h"

namespace zpk_test {

TEST(ZPKDimStream, WhatThisProcessWritesIsDimAndItsLinesEndUndimmed) {
    const CapturedStreams streams = captureStreams([] {
        std::cerr << "before\n";
        {
            const ZPKDimStream error(stderr, std::cerr, STDERR_FILENO);
            const ZPKDimStream output(stdout, std::cout, STDOUT_FILENO);
            std::cerr << "one" << '\n';
            std::fputs("two\n", stderr);
            std::fprintf(stdout, "%s\n", "three");
            EXPECT_EQ(::write(STDERR_FILENO, "another's\n", 10), 10);
            std::fputs("half", stderr);
        }
        std::cerr << "after\n";
        std::fprintf(stdout, "after\n");
    });
    EXPECT_EQ(streams.standardError,
              "before\n\x1b[2mone\x1b[22m\n\x1b[2mtwo\x1b[22m\nanother's\n\x1b[2mhalf\x1b[22m"
              "after\n");
    EXPECT_EQ(streams.standardOutput, "\x1b[2mthree\x1b[22m\nafter\n");
}

TEST(ZPKDimStream, AnEmptyStretchChangesNothing) {
    const CapturedStreams streams = captureStreams([] {
        FILE* const before = stderr;
        std::streambuf* const alongsideBefore = std::cerr.rdbuf();
        std::optional<ZPKDimStream> error(std::in_place, stderr, std::cerr, STDERR_FILENO);
        EXPECT_NE(stderr, before);
        error.reset();
        EXPECT_EQ(stderr, before);
        EXPECT_EQ(std::cerr.rdbuf(), alongsideBefore);
    });
    EXPECT_EQ(streams.standardError, "");
}

}  // namespace zpk_test
