// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/InputFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "Archive/ByteSource.h"
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

/// Gives so much at a time, and then fails or ends.
zpk_archive::ByteSource sourceOf(const std::string& bytes, std::size_t most, const char* failure = nullptr) {
    return [&bytes, most, failure, done = std::size_t{0}](std::uint8_t* piece, std::size_t count) mutable {
        const std::size_t given = std::min({count, most, bytes.size() - done});
        if (given == 0 && failure != nullptr) {
            throw ArchiveFailure(failure);
        }
        std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(done), given, piece);
        done += given;
        return given;
    };
}

TEST(InputFileTest, ReadsTheSameFromASourceHoweverLittleThatGivesAtATime) {
    const std::string bytes = pattern(1000003);
    for (const std::size_t most : {std::size_t{1}, std::size_t{1000}, bytes.size()}) {
        expectReadsAndPeeksInTurns(InputFile(sourceOf(bytes, most)), bytes);
    }
}

TEST(InputFileTest, ReadsTheSameAheadFromWhereverItIs) {
    const TemporaryFolder folder;
    const std::string bytes = pattern(3000017);
    writeFile(folder / "file", bytes);
    for (const std::size_t before : {0U, 1U, 300000U, 3000017U}) {
        InputFile file(folder / "file");
        InputFile fromSource(sourceOf(bytes, 1000));
        for (InputFile* const input : {&file, &fromSource}) {
            std::string first(before, '\0');
            ASSERT_EQ(input->read(reinterpret_cast<std::uint8_t*>(first.data()), before), before);
            EXPECT_TRUE(first == bytes.substr(0, before));
            input->readAhead();
            input->readAhead();
            expectReadsAndPeeksInTurns(std::move(*input), bytes.substr(before));
        }
    }
}

TEST(InputFileTest, AFailureOfTheThreadThatReadsAheadComesAfterWhatItRead) {
    const std::string bytes = pattern(1200000);
    InputFile input(sourceOf(bytes, 70000, "the disk is gone"));
    input.readAhead();
    std::string got(bytes.size(), '\0');
    ASSERT_EQ(input.read(reinterpret_cast<std::uint8_t*>(got.data()), got.size()), got.size());
    EXPECT_TRUE(got == bytes);
    try {
        static_cast<void>(input.available());
        ADD_FAILURE() << "nothing was thrown";
    } catch (const ArchiveFailure& failure) {
        EXPECT_STREQ(failure.what(), "the disk is gone");
    }
}

TEST(InputFileTest, ReadsAheadNoMoreThanItHasRoomFor) {
    std::atomic<std::size_t> pieces = 0;
    {
        InputFile input([&](std::uint8_t*, std::size_t count) {
            ++pieces;
            return count;
        });
        input.readAhead();
        for (int taken = 0; taken < 20; ++taken) {
            const std::size_t size = input.available().size();
            ASSERT_GT(size, 0U);
            input.consume(size);
        }
    }
    EXPECT_GE(pieces, 20U);
    EXPECT_LE(pieces, 24U);
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
