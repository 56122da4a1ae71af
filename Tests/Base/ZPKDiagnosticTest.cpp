// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Base/ZPKDiagnostic.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <string>

#include "Base/ZPKFileDescriptor.h"
#include "Tests/Support/CapturedStreams.h"

namespace {

TEST(ZPKDiagnosticTest, PartsAreOneLineAfterTheProgramsName) {
    const zpk_test::CapturedStreams streams = zpk_test::captureStreams([] {
        ZPKDiagnostic::tell({"cannot start ", "/a", ": ", "why"});
        ZPKDiagnostic::tell({});
    });
    EXPECT_EQ(streams.standardError, "Zephyrkit: cannot start /a: why\nZephyrkit: \n");
    EXPECT_EQ(streams.standardOutput, "");
}

TEST(ZPKDiagnosticTest, LineIsWrittenInOnePiece) {
    int ends[2];
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends), 0);
    const ZPKFileDescriptor reading(ends[0]);
    const ZPKFileDescriptor writing(ends[1]);
    const ZPKFileDescriptor before(::dup(STDERR_FILENO));
    ASSERT_NE(::dup2(writing.get(), STDERR_FILENO), -1);
    ZPKDiagnostic::tell({"one, ", "two"});
    ASSERT_NE(::dup2(before.get(), STDERR_FILENO), -1);
    char piece[64];
    const ssize_t size = ::recv(reading.get(), piece, sizeof(piece), MSG_DONTWAIT);
    ASSERT_GT(size, 0);
    EXPECT_EQ(std::string(piece, static_cast<std::size_t>(size)), "Zephyrkit: one, two\n");
}

}  // namespace
