// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Base/ZPKRegularFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "Tests/Support/TemporaryFolder.h"

namespace {

using zpk_test::TemporaryFolder;
using zpk_test::writeFile;

class ZPKRegularFileTest : public ::testing::Test {
protected:
    /// The cause for which there are no contents, or 0.
    static int cause(const std::string& path, std::size_t limit = 10) {
        errno = 0;
        return ZPKRegularFile::contents(path, limit) ? 0 : errno;
    }

    TemporaryFolder m_folder;
};

TEST_F(ZPKRegularFileTest, GivesAllBytesUpToTheLimit) {
    const std::string bytes("a\0\xff", 3);
    writeFile(m_folder / "file", bytes);
    EXPECT_EQ(ZPKRegularFile::contents(m_folder / "file", 3), bytes);
    EXPECT_EQ(cause(m_folder / "file", 2), EFBIG);
    ASSERT_EQ(::symlink("file", (m_folder / "link").c_str()), 0);
    EXPECT_EQ(ZPKRegularFile::contents(m_folder / "link", 3), bytes);
}

TEST_F(ZPKRegularFileTest, NothingElseIsAFileAndNothingWaits) {
    ASSERT_EQ(::mkfifo((m_folder / "fifo").c_str(), 0600), 0);
    EXPECT_EQ(cause(m_folder / "fifo"), EINVAL);
    EXPECT_EQ(cause("/dev/zero"), EINVAL);
    EXPECT_EQ(cause(m_folder.path()), EISDIR);
    EXPECT_EQ(cause(m_folder / "missing"), ENOENT);
    EXPECT_FALSE(ZPKRegularFile::open(m_folder / "fifo").isOpen());
}

}  // namespace
