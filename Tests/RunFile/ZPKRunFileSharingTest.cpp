// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

// On a file system whose files share bytes. Stands alone: it plays that file system.

#include <gtest/gtest.h>
#include <linux/fs.h>
#include <sys/ioctl.h>

#include <cerrno>
#include <cstdarg>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <string>
#include <vector>

#include "Base/ZPKDescriptorIO.h"
#include "RunFile/ZPKRunFile.h"
#include "RunFile/ZPKRunFilePlacer.h"
#include "RunFile/ZPKRunFileWriter.h"
#include "Tests/Support/TemporaryFolder.h"

namespace {

std::mutex guard;
std::vector<file_clone_range> sharedRanges;

/// As such a file system does it, to be seen from outside.
int share(int destination, const file_clone_range& range) {
    if (range.src_offset % 4096 != 0 || range.src_length % 4096 != 0 || range.dest_offset % 4096 != 0) {
        errno = EINVAL;
        return -1;
    }
    std::string bytes(range.src_length, '\0');
    const auto source = static_cast<int>(range.src_fd);
    const bool isDone = ZPKDescriptorIO::readWholeAt(source, bytes.data(), bytes.size(),
                                                     static_cast<off_t>(range.src_offset)) ==
                            static_cast<ssize_t>(bytes.size()) &&
                        ZPKDescriptorIO::writeWholeAt(destination, bytes.data(), bytes.size(),
                                                      static_cast<off_t>(range.dest_offset));
    const std::scoped_lock lock(guard);
    sharedRanges.push_back(range);
    return isDone ? 0 : -1;
}

}  // namespace

extern "C" int ioctl(int descriptor, unsigned long request, ...) noexcept {
    va_list arguments;
    va_start(arguments, request);
    const auto* const range = va_arg(arguments, const file_clone_range*);
    va_end(arguments);
    if (request == FICLONERANGE) {
        return share(descriptor, *range);
    }
    errno = ENOTTY;
    return -1;
}

namespace {

using zpk_test::readFile;
using zpk_test::TemporaryFolder;
using zpk_test::writeFile;

constexpr std::size_t kTail = 1234;
constexpr std::size_t kSize = ZPKRunFileTable::kSegmentSize + 3 * 4096 + kTail;

class ZPKRunFileSharingTest : public testing::Test {
protected:
    void SetUp() override {
        sharedRanges.clear();
        std::filesystem::create_directories(m_folder / "A.app");
        m_bytes.reserve(kSize);
        for (std::uint32_t value = 1; m_bytes.size() < kSize; value = value * 1664525 + 1013904223) {
            m_bytes += static_cast<char>(value >> 24);
        }
        writeFile(m_folder / "A.app/large", m_bytes);
        writeFile(m_folder / "program", "program");
        ASSERT_TRUE(
            ZPKRunFileWriter(m_folder / "program", m_folder / "A.app", "large").write(m_folder / "A.run"));
    }

    ZPKOutcome place() {
        std::filesystem::create_directory(m_folder / "placed");
        const ZPKResult<ZPKRunFile> file = ZPKRunFile::open(m_folder / "A.run");
        return file ? ZPKRunFilePlacer(*file).placeIn(m_folder / "placed") : file.failure();
    }

    TemporaryFolder m_folder;
    std::string m_bytes;
};

TEST_F(ZPKRunFileSharingTest, WholeBlocksAreSharedAndTheRestIsWritten) {
    const ZPKOutcome placed = place();
    ASSERT_TRUE(placed) << placed.failure().message();
    EXPECT_TRUE(readFile(m_folder / "placed/A.app/large") == m_bytes);
    std::size_t shared = 0;
    for (const file_clone_range& range : sharedRanges) {
        shared += range.src_length;
    }
    EXPECT_EQ(shared, kSize - kTail);
}

TEST_F(ZPKRunFileSharingTest, DamageInWhatIsSharedIsFound) {
    const std::string whole = readFile(m_folder / "A.run");
    for (const std::size_t at :
         {whole.find(m_bytes.substr(0, 100)) + 5000, whole.find(m_bytes.substr(kSize - 100))}) {
        std::string changed = whole;
        changed[at] = static_cast<char>(changed[at] ^ 1);
        writeFile(m_folder / "A.run", changed);
        std::filesystem::remove_all(m_folder / "placed");
        EXPECT_FALSE(place()) << at;
    }
}

}  // namespace
