// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/InputFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "Archive/Failure.h"
#include "Tests/Support/TemporaryFolder.h"

namespace {

using zpk_archive::ArchiveFailure;
using zpk_archive::InputFile;
using zpk_test::TemporaryFolder;
using zpk_test::writeFile;

std::string refusalOf(const std::string& path) {
    try {
        InputFile input(path);
    } catch (const ArchiveFailure& failure) {
        return failure.what();
    }
    return "opened";
}

/// Differs from piece to piece, so that bytes that come twice or not at all show.
std::string pattern(std::size_t size) {
    std::string bytes(size, '\0');
    for (std::size_t i = 0; i < size; ++i) {
        bytes[i] = static_cast<char>(i * 31 + i / 251);
    }
    return bytes;
}

void expectReadsAndPeeksInTurns(InputFile input, const std::string& bytes) {
    std::string got;
    for (std::size_t step = 1; got.size() < bytes.size(); step = step * 3 % 70001) {
        const auto peeked = input.peek(step % 1000);
        ASSERT_GE(peeked.size(), std::min(step % 1000, bytes.size() - got.size()));
        std::vector<std::uint8_t> piece(step);
        const std::size_t count = input.read(piece.data(), step);
        ASSERT_EQ(count, std::min(step, bytes.size() - got.size()));
        got.append(reinterpret_cast<const char*>(piece.data()), count);
        const std::size_t consumed = std::min<std::size_t>(input.available().size(), 7);
        got.append(reinterpret_cast<const char*>(input.available().data()), consumed);
        input.consume(consumed);
    }
    EXPECT_TRUE(got == bytes);
    EXPECT_TRUE(input.available().empty());
    std::uint8_t byte = 0;
    EXPECT_EQ(input.read(&byte, 1), 0U);
}

TEST(InputFileTest, ReadsAndPeeksInTurnsUpToTheEnd) {
    const TemporaryFolder folder;
    const std::string bytes = pattern(1000003);
    writeFile(folder / "file", bytes);
    expectReadsAndPeeksInTurns(InputFile(folder / "file"), bytes);
}

TEST(InputFileTest, ReadsTheSameFromASourceHoweverLittleThatGivesAtATime) {
    const std::string bytes = pattern(1000003);
    for (const std::size_t most : {std::size_t{1}, std::size_t{1000}, bytes.size()}) {
        const auto source = [&bytes, most, done = std::size_t{0}](std::uint8_t* piece,
                                                                  std::size_t count) mutable {
            const std::size_t given = std::min({count, most, bytes.size() - done});
            std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(done), given, piece);
            done += given;
            return given;
        };
        expectReadsAndPeeksInTurns(InputFile(source), bytes);
    }
}

TEST(InputFileTest, SaysWhyItCannotRead) {
    const TemporaryFolder folder;
    ASSERT_EQ(::mkfifo((folder / "fifo").c_str(), 0600), 0);
    writeFile(folder / "file", "x");
    EXPECT_EQ(refusalOf(folder / "missing"), "No such file or directory");
    EXPECT_EQ(refusalOf(folder / "file/below"), "Not a directory");
    EXPECT_EQ(refusalOf(folder.path()), "not a regular file");
    EXPECT_EQ(refusalOf(folder / "fifo"), "not a regular file");
    EXPECT_EQ(refusalOf("/dev/zero"), "not a regular file");
    EXPECT_EQ(refusalOf(folder / "file"), "opened");
}

}  // namespace
