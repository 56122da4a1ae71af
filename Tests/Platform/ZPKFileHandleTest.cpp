// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Platform/ZPKFileHandle.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>

#include "Tests/Support/Pattern.h"
#include "Tests/Support/TemporaryFolder.h"

namespace {

using zpk_test::pattern;
using zpk_test::readFile;
using zpk_test::TemporaryFolder;
using zpk_test::writeFile;

TEST(ZPKFileHandleTest, ReadsOnlyRegularFilesAndNeverWaits) {
    const TemporaryFolder folder;
    writeFile(folder / "file", "12345");
    ASSERT_EQ(::mkfifo((folder / "fifo").c_str(), 0666), 0);
    std::filesystem::create_symlink("file", folder / "link");
    const auto file = ZPKFileHandle::forReadingAtPath(folder / "file");
    ASSERT_TRUE(file);
    EXPECT_EQ(file->size(), 5u);
    EXPECT_TRUE(ZPKFileHandle::forReadingAtPath(folder / "link"));
    EXPECT_FALSE(ZPKFileHandle::forReadingAt(AT_FDCWD, folder / "link", "link"));
    EXPECT_TRUE(ZPKFileHandle::forReadingAt(AT_FDCWD, folder / "file", "file"));
    EXPECT_FALSE(ZPKFileHandle::forReadingAtPath(folder / "fifo"));
    EXPECT_FALSE(ZPKFileHandle::forReadingAtPath(folder.path()));
    EXPECT_FALSE(ZPKFileHandle::forReadingAtPath("/dev/zero"));
    EXPECT_FALSE(ZPKFileHandle::forReadingAtPath(folder / "missing"));
}

TEST(ZPKFileHandleTest, SaysWhyAFileCannotBeOpened) {
    const TemporaryFolder folder;
    ASSERT_EQ(::mkfifo((folder / "fifo").c_str(), 0666), 0);
    std::filesystem::create_symlink("/dev/zero", folder / "zero");
    struct Row {
        std::string path;
        const char* reason;
    };
    for (const Row& row :
         {Row{folder / "missing", "No such file or directory"}, Row{folder.path(), "Is a directory"},
          Row{folder / "fifo", "Not a regular file"}, Row{folder / "zero", "Not a regular file"}}) {
        const auto file = ZPKFileHandle::forReadingAtPath(row.path);
        ASSERT_FALSE(file) << row.path;
        EXPECT_EQ(file.failure().message(), row.path + ": " + row.reason);
    }
}

TEST(ZPKFileHandleTest, ContentsAreBounded) {
    const TemporaryFolder folder;
    const std::string bytes = pattern(100'000);
    writeFile(folder / "file", bytes);
    const auto file = ZPKFileHandle::forReadingAtPath(folder / "file");
    ASSERT_TRUE(file);
    EXPECT_EQ(file->path(), folder / "file");
    for (const std::size_t limit : {std::size_t{100'000}, std::size_t{100'001}, SIZE_MAX}) {
        const auto contents = file->contents(limit);
        ASSERT_TRUE(contents) << limit;
        EXPECT_EQ(*contents, bytes) << "from the start each time";
    }
    const auto contents = file->contents(99'999);
    ASSERT_FALSE(contents);
    EXPECT_EQ(contents.failure().message(), folder / "file" + ": File too large");
}

TEST(ZPKFileHandleTest, ContentsOfAFileThatHasGrownAreBoundedToo) {
    const TemporaryFolder folder;
    writeFile(folder / "file", "12345");
    const auto file = ZPKFileHandle::forReadingAtPath(folder / "file");
    ASSERT_TRUE(file);
    writeFile(folder / "file", "1234567890");
    EXPECT_EQ(*file->contents(10), "1234567890");
    EXPECT_FALSE(file->contents(9));
    // The kernel's files give no size.
    const auto kernelFile = ZPKFileHandle::forReadingAtPath("/proc/self/stat");
    ASSERT_TRUE(kernelFile);
    EXPECT_FALSE(kernelFile->contents(10));
    EXPECT_TRUE(kernelFile->contents(10'000));
}

TEST(ZPKFileHandleTest, ReplacingKeepsOtherNamesAndLinkTargets) {
    const TemporaryFolder folder;
    writeFile(folder / "file", "old");
    writeFile(folder / "target", "kept");
    std::filesystem::create_hard_link(folder / "file", folder / "other");
    std::filesystem::create_symlink("target", folder / "link");
    ASSERT_EQ(::mkfifo((folder / "fifo").c_str(), 0666), 0);
    std::filesystem::create_directory(folder / "folder");
    for (const char* const name : {"file", "link", "fifo", "missing"}) {
        EXPECT_TRUE(ZPKFileHandle::replacingFileAtPath(folder / name)) << name;
        EXPECT_EQ(readFile(folder / name), "") << name;
    }
    EXPECT_FALSE(ZPKFileHandle::replacingFileAtPath(folder / "folder"));
    EXPECT_TRUE(std::filesystem::is_directory(folder / "folder"));
    EXPECT_EQ(readFile(folder / "other"), "old");
    EXPECT_EQ(readFile(folder / "target"), "kept");
    EXPECT_FALSE(ZPKFileHandle::newFileAt(AT_FDCWD, folder / "file", 0666, "file"));
}

class ZPKFileHandleAppendTest : public ::testing::TestWithParam<const char*> {};

TEST_P(ZPKFileHandleAppendTest, CopiesRangesWhateverTheFileSystems) {
    const TemporaryFolder folder;
    // Another file system than the test's folder, so that in-kernel copying has to fall back.
    const std::string otherPlace = std::string(GetParam()) == "same"
                                       ? folder / "source"
                                       : "/dev/shm/zpk-append-" + std::to_string(::getpid());
    const std::string bytes = pattern(1'000'003);
    writeFile(otherPlace, bytes);
    {
        const auto source = ZPKFileHandle::forReadingAtPath(otherPlace);
        auto destination = ZPKFileHandle::replacingFileAtPath(folder / "destination");
        ASSERT_TRUE(source && destination);
        EXPECT_TRUE(destination->append(*source, 700'001, 300'002));
        EXPECT_TRUE(destination->append(*source, 0, 700'001));
        EXPECT_TRUE(destination->append(*source, 5, 0));
        const ZPKOutcome outcome = destination->append(*source, 1'000'000, 4);
        ASSERT_FALSE(outcome) << "the source ends before";
        EXPECT_EQ(outcome.failure().path(), otherPlace);
    }
    EXPECT_EQ(readFile(folder / "destination"),
              bytes.substr(700'001) + bytes.substr(0, 700'001) + bytes.substr(1'000'000));
    ::unlink(otherPlace.c_str());
}

INSTANTIATE_TEST_SUITE_P(FileSystems, ZPKFileHandleAppendTest, ::testing::Values("same", "other"));

TEST(ZPKFileHandleTest, AppendCopiesByHandWhereTheKernelWillNot) {
    const TemporaryFolder folder;
    writeFile(folder / "source", pattern(600'000));
    const auto source = ZPKFileHandle::forReadingAtPath(folder / "source");
    auto destination = ZPKFileHandle::replacingFileAtPath(folder / "destination");
    ASSERT_TRUE(source && destination);
    // Neither of the kernel's copies writes to a descriptor that appends.
    ASSERT_EQ(::fcntl(destination->descriptor(), F_SETFL, O_APPEND), 0);
    EXPECT_TRUE(destination->append(*source, 1, 599'999));
    EXPECT_EQ(readFile(folder / "destination"), readFile(folder / "source").substr(1));
}

TEST(ZPKFileHandleTest, AppendReportsAFullDisk) {
    const TemporaryFolder folder;
    writeFile(folder / "source", pattern(100'000));
    const auto source = ZPKFileHandle::forReadingAtPath(folder / "source");
    auto destination = ZPKFileHandle::replacingFileAtPath(folder / "destination");
    ASSERT_TRUE(source && destination);
    const int full = ::open("/dev/full", O_WRONLY);
    ASSERT_GE(full, 0);
    ::dup2(full, destination->descriptor());
    ::close(full);
    const ZPKOutcome outcome = destination->append(*source, 0, 100'000);
    ASSERT_FALSE(outcome);
    EXPECT_EQ(outcome.failure().message(), folder / "destination" + ": No space left on device");
}

}  // namespace
