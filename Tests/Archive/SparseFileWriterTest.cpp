// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/SparseFileWriter.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>

#include "Archive/Failure.h"
#include "Base/ZPKFileDescriptor.h"
#include "Tests/Support/TemporaryFolder.h"

namespace {

using zpk_archive::MemberFailure;
using zpk_archive::SparseFileWriter;
using namespace zpk_test;

std::span<const std::uint8_t> bytesOf(const std::string& text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

/// Writes the contents in pieces of that size, and gives the number of blocks on disk.
blkcnt_t writeInPieces(const std::string& path, const std::string& contents, std::size_t piece) {
    const ZPKFileDescriptor file(::open(path.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
    SparseFileWriter writer(file.get());
    for (std::size_t at = 0; at < contents.size(); at += piece) {
        writer.write(bytesOf(contents).subspan(at, std::min(piece, contents.size() - at)));
    }
    writer.finish();
    struct stat status {};
    EXPECT_EQ(::fstat(file.get(), &status), 0);
    return status.st_blocks;
}

TEST(SparseFileWriterTest, ContentsAreExactInPiecesOfAnySize) {
    const TemporaryFolder folder;
    const std::string contents = "head" + std::string(70000, '\0') + "middle" + std::string(40000, '\0') +
                                 "x" + std::string(20000, '\0');
    for (const std::size_t piece : {std::size_t{100}, std::size_t{4095}, std::size_t{4096},
                                    std::size_t{16384}, std::size_t{50001}, contents.size()}) {
        writeInPieces(folder / "file", contents, piece);
        EXPECT_TRUE(readFile(folder / "file") == contents) << piece;
    }
}

TEST(SparseFileWriterTest, LongRunsOfZerosTakeNoRoom) {
    const TemporaryFolder folder;
    const std::string zeros(std::size_t{4} << 20, '\0');
    EXPECT_LT(writeInPieces(folder / "file", "a" + zeros + "b", 65536), 128);
    EXPECT_EQ(writeInPieces(folder / "file", zeros, 65536), 0);
    EXPECT_EQ(readFile(folder / "file").size(), zeros.size());
}

TEST(SparseFileWriterTest, SaysWhyItCannotWrite) {
    const TemporaryFolder folder;
    writeFile(folder / "file", "");
    const ZPKFileDescriptor file(::open((folder / "file").c_str(), O_RDONLY | O_CLOEXEC));
    SparseFileWriter writer(file.get());
    try {
        writer.write(bytesOf("text"));
        FAIL() << "written";
    } catch (const MemberFailure& failure) {
        EXPECT_STREQ(failure.what(), "Bad file descriptor");
    }
}

}  // namespace
