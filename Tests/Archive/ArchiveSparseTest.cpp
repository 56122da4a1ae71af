// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include <fcntl.h>
#include <unistd.h>

#include <filesystem>

#include "Tests/Archive/ArchiveFixture.h"

namespace {

namespace fs = std::filesystem;
using namespace zpk_test;

TEST(ArchiveSparseTest, FileOverFourGibibytesComesBackWithItsHoles) {
    TemporaryFolder folder;
    writeFile(folder / "D/sparse", "start");
    std::uintmax_t size = (std::uintmax_t{1} << 32) + 12345;
    fs::resize_file(folder / "D/sparse", size);
    int file = open((folder / "D/sparse").c_str(), O_WRONLY);
    ASSERT_EQ(pwrite(file, "middle", 6, (off_t{1} << 31) + 1), 6);
    ASSERT_EQ(pwrite(file, "end", 3, (off_t{1} << 32) + 100), 3);
    close(file);
    Outcome created = create(folder / "D", folder / "d.dat");
    ASSERT_EQ(created.exitStatus, 0) << created.standardError;
    EXPECT_LT(created.peakMemory, 64 * 1024);
    Outcome extracted = extract(folder / "d.dat", folder / "out");
    ASSERT_EQ(extracted.exitStatus, 0) << extracted.standardError;
    EXPECT_LT(extracted.peakMemory, 64 * 1024);
    struct stat status {};
    ASSERT_EQ(stat((folder / "out/D/sparse").c_str(), &status), 0);
    EXPECT_EQ(static_cast<std::uintmax_t>(status.st_size), size);
    EXPECT_LT(status.st_blocks, 1024);
    file = open((folder / "out/D/sparse").c_str(), O_RDONLY);
    char bytes[8] = {};
    EXPECT_EQ(pread(file, bytes, 5, 0), 5);
    EXPECT_STREQ(bytes, "start");
    EXPECT_EQ(pread(file, bytes, 7, (off_t{1} << 31) + 1), 7);
    EXPECT_STREQ(bytes, "middle");
    EXPECT_EQ(pread(file, bytes, 8, (off_t{1} << 32) + 100), 8);
    EXPECT_STREQ(bytes, "end");
    close(file);
}

TEST(ArchiveSparseTest, ZerosAtEveryAlignmentComeBackExactly) {
    TemporaryFolder folder;
    int row = 0;
    for (std::size_t before : {0U, 1U, 4095U, 4096U, 4097U, 1048575U}) {
        for (std::size_t zeros : {1U, 4096U, 16384U, 16385U, 70000U, 1200000U}) {
            for (std::size_t after : {0U, 1U, 4096U}) {
                writeFile(folder / ("D/" + std::to_string(row++)),
                          std::string(before, 'b') + std::string(zeros, '\0') + std::string(after, 'a'));
            }
        }
    }
    ASSERT_EQ(create(folder / "D", folder / "d.dat").exitStatus, 0);
    ASSERT_EQ(extract(folder / "d.dat", folder / "out").exitStatus, 0);
    EXPECT_EQ(snapshot(folder / "D"), snapshot(folder / "out/D"));
}

}  // namespace
