// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/OutputFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>

#include "Archive/Failure.h"
#include "Tests/Support/TemporaryFolder.h"

namespace {

namespace fs = std::filesystem;
using zpk_archive::ArchiveFailure;
using zpk_archive::OutputFile;
using namespace zpk_test;

void write(OutputFile& file, const std::string& text) {
    file.write({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
}

struct stat statusOf(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(::stat(path.c_str(), &status), 0) << path;
    return status;
}

TEST(OutputFileTest, AppearsWhenItIsComplete) {
    const TemporaryFolder folder;
    writeFile(folder / "out", "old");
    OutputFile file(folder / "out");
    write(file, "the new ");
    write(file, "contents");
    EXPECT_EQ(readFile(folder / "out"), "old");
    file.commit();
    EXPECT_EQ(readFile(folder / "out"), "the new contents");
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.path()), fs::directory_iterator()), 1);
}

TEST(OutputFileTest, GivenUpLeavesNothing) {
    const TemporaryFolder folder;
    {
        OutputFile file(folder / "out");
        write(file, "half of it");
        EXPECT_FALSE(fs::is_empty(folder.path()));
    }
    EXPECT_TRUE(fs::is_empty(folder.path()));
}

TEST(OutputFileTest, SaysWhyItCannotBeMade) {
    const TemporaryFolder folder;
    try {
        OutputFile file(folder / "missing/out");
        FAIL() << "made";
    } catch (const ArchiveFailure& failure) {
        EXPECT_STREQ(failure.what(), "No such file or directory");
    }
    fs::create_directory(folder / "folder");
    OutputFile onFolder(folder / "folder");
    try {
        onFolder.commit();
        FAIL() << "committed";
    } catch (const ArchiveFailure& failure) {
        EXPECT_STREQ(failure.what(), "Is a directory");
    }
}

TEST(OutputFileTest, KnowsItselfAndWhatItReplaces) {
    const TemporaryFolder folder;
    writeFile(folder / "out", "old");
    writeFile(folder / "other", "other");
    const OutputFile file(folder / "out");
    EXPECT_TRUE(file.isSelf(statusOf(folder / "out")));
    EXPECT_FALSE(file.isSelf(statusOf(folder / "other")));
    fs::create_directory(folder / "out of the way");
    int others = 0;
    for (const auto& item : fs::directory_iterator(folder.path())) {
        others += file.isSelf(statusOf(item.path().string())) ? 0 : 1;
    }
    EXPECT_EQ(others, 2);
}

}  // namespace
