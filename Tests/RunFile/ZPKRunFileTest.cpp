// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "RunFile/ZPKRunFile.h"

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <random>
#include <string>

#include "RunFile/ZPKRunFilePlacer.h"
#include "RunFile/ZPKRunFileWriter.h"
#include "Tests/Support/TemporaryFolder.h"

namespace {

using zpk_test::TemporaryFolder;

void writeFile(const std::string& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

std::string contentsOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string noise(std::size_t size) {
    std::mt19937 random(1);
    std::string bytes(size, '\0');
    for (char& byte : bytes) {
        byte = static_cast<char>(random());
    }
    return bytes;
}

/// Everything below a folder: path to kind, mode and contents.
std::map<std::string, std::string> snapshot(const std::string& folder) {
    std::map<std::string, std::string> found;
    for (const auto& item : std::filesystem::recursive_directory_iterator(folder)) {
        struct stat attributes {};
        ::lstat(item.path().c_str(), &attributes);
        std::string& text = found[item.path().lexically_relative(folder)];
        text = std::to_string(attributes.st_mode) + ":";
        if (item.is_symlink()) {
            text += std::filesystem::read_symlink(item.path());
        } else if (item.is_regular_file()) {
            text += contentsOf(item.path());
        }
    }
    return found;
}

class ZPKRunFileTest : public testing::Test {
protected:
    ZPKRunFileTest() {
        bundle = folder / "source/A.app";
        std::filesystem::create_directories(bundle + "/Contents/Resources");
        std::filesystem::create_directories(bundle + "/empty");
        writeFile(bundle + "/Contents/Info.plist", "<plist/>");
        writeFile(bundle + "/Contents/empty file", "");
        writeFile(bundle + "/Contents/program", std::string(300000, 'p'));
        ::chmod((bundle + "/Contents/program").c_str(), 0755);
        std::filesystem::create_symlink("../Info.plist", bundle + "/Contents/Resources/link");
        writeFile(folder / "program", "#!/bin/true\n");
    }

    ZPKOutcome make() {
        return ZPKRunFileWriter(folder / "program", bundle, "Contents/program").write(output());
    }
    std::string output() const { return folder / "A.run"; }

    ZPKOutcome place(const std::string& path) {
        const ZPKResult<ZPKRunFile> file = ZPKRunFile::open(path);
        if (!file) {
            return file.failure();
        }
        std::filesystem::remove_all(folder / "placed");
        std::filesystem::create_directory(folder / "placed");
        return ZPKRunFilePlacer(*file).placeIn(folder / "placed");
    }

    /// Changes a byte of the run file at each `step`, and back.
    void expectEachChangeIsFound(std::size_t step) {
        const std::string good = contentsOf(output());
        std::fstream file(output(), std::ios::in | std::ios::out | std::ios::binary);
        const auto put = [&file](std::size_t at, char byte) {
            file.seekp(static_cast<std::streamoff>(at)).put(byte).flush();
        };
        for (std::size_t at = 0; at < good.size(); at += step) {
            put(at, static_cast<char>(good[at] ^ 1));
            EXPECT_FALSE(place(output())) << at << " of " << good.size();
            put(at, good[at]);
        }
        EXPECT_TRUE(place(output()));
    }

    TemporaryFolder folder;
    std::string bundle;
};

TEST_F(ZPKRunFileTest, WhatIsPackedIsPlacedAgain) {
    writeFile(bundle + "/Contents/Resources/Data.datx", noise(3 << 20));
    ASSERT_TRUE(make());
    const ZPKOutcome placed = place(output());
    ASSERT_TRUE(placed) << placed.failure().message();
    EXPECT_EQ(snapshot(folder / "placed"), snapshot(folder / "source"));
}

TEST_F(ZPKRunFileTest, FilesOfSeveralSegmentsArePlacedAgain) {
    writeFile(bundle + "/Contents/Resources/Data.datx", noise((ZPKRunFileTable::kSegmentSize * 2) + 5));
    ASSERT_TRUE(make());
    ASSERT_TRUE(place(output()));
    EXPECT_TRUE(snapshot(folder / "placed") == snapshot(folder / "source"));
}

TEST_F(ZPKRunFileTest, TheSameBundleGivesTheSameFile) {
    ASSERT_TRUE(make());
    const std::string first = contentsOf(output());
    ASSERT_TRUE(make());
    EXPECT_TRUE(first == contentsOf(output()));
}

TEST_F(ZPKRunFileTest, TheNumberOfProcessorsDoesNotCount) {
    for (const char letter : std::string("abcdef")) {
        writeFile(bundle + "/" + letter, std::string(std::size_t{3} << 20, letter) + noise(1 << 16));
    }
    ASSERT_TRUE(make());
    const std::string first = contentsOf(output());
    EXPECT_GE(ZPKRunFile::open(output())->table().blocks.size(), 4U);
    cpu_set_t all;
    ASSERT_EQ(::sched_getaffinity(0, sizeof all, &all), 0);
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(static_cast<std::size_t>(::sched_getcpu()), &one);
    ASSERT_EQ(::sched_setaffinity(0, sizeof one, &one), 0);
    const ZPKOutcome made = make();
    ASSERT_EQ(::sched_setaffinity(0, sizeof all, &all), 0);
    ASSERT_TRUE(made);
    EXPECT_TRUE(first == contentsOf(output()));
}

TEST_F(ZPKRunFileTest, BeginsWithItsProgramAndMayBeExecuted) {
    ASSERT_TRUE(make());
    EXPECT_TRUE(contentsOf(output()).starts_with("#!/bin/true\n"));
    EXPECT_EQ(::access(output().c_str(), X_OK), 0);
}

TEST_F(ZPKRunFileTest, LargeNoiseIsStoredAndTextIsPacked) {
    writeFile(bundle + "/noise", noise(2 << 20));
    writeFile(bundle + "/text", std::string(std::size_t{2} << 20, 't'));
    ASSERT_TRUE(make());
    const ZPKResult<ZPKRunFile> file = ZPKRunFile::open(output());
    ASSERT_TRUE(file);
    std::map<std::string, ZPKRunFileEntry::Kind> kinds;
    for (const ZPKRunFileEntry& entry : file->table().entries) {
        kinds[entry.path] = entry.kind;
    }
    EXPECT_EQ(kinds["A.app/noise"], ZPKRunFileEntry::Kind::StoredFile);
    EXPECT_EQ(kinds["A.app/text"], ZPKRunFileEntry::Kind::PackedFile);
}

TEST_F(ZPKRunFileTest, EveryChangedByteIsFound) {
    ASSERT_TRUE(make());
    expectEachChangeIsFound(1);
}

TEST_F(ZPKRunFileTest, ChangedBytesOfAStoredFileAndBeforeItAreFound) {
    writeFile(bundle + "/noise", noise((1 << 20) + 100));
    ASSERT_TRUE(make());
    // A prime, for steps through pages, padding and file that meet every kind of place.
    expectEachChangeIsFound(4099);
}

TEST_F(ZPKRunFileTest, ChangedPaddingIsFound) {
    writeFile(bundle + "/noise", noise(1 << 20));
    ASSERT_TRUE(make());
    std::uint64_t offset = 0;
    const ZPKResult<ZPKRunFile> made = ZPKRunFile::open(output());
    ASSERT_TRUE(made);
    for (const ZPKRunFileEntry& entry : made->table().entries) {
        offset = entry.kind == ZPKRunFileEntry::Kind::StoredFile ? entry.offset : offset;
    }
    ASSERT_GT(offset, 0u);
    ASSERT_EQ(contentsOf(output())[offset - 1], '\0') << "there is no padding to change";
    std::fstream(output(), std::ios::in | std::ios::out | std::ios::binary)
        .seekp(static_cast<std::streamoff>(offset - 1))
        .put('x');
    EXPECT_FALSE(ZPKRunFile::open(output()));
}

TEST_F(ZPKRunFileTest, EveryTruncationIsFound) {
    ASSERT_TRUE(make());
    const std::string good = contentsOf(output());
    writeFile(folder / "long.run", good + "x");
    EXPECT_FALSE(ZPKRunFile::open(folder / "long.run"));
    for (std::size_t length = good.size(); length-- > 0;) {
        ASSERT_EQ(::truncate(output().c_str(), static_cast<off_t>(length)), 0);
        EXPECT_FALSE(ZPKRunFile::open(output())) << length;
    }
}

TEST_F(ZPKRunFileTest, FailuresNameTheFileAndTheReason) {
    const ZPKResult<ZPKRunFile> missing = ZPKRunFile::open(folder / "missing");
    ASSERT_FALSE(missing);
    EXPECT_EQ(missing.failure().message(), (folder / "missing") + ": No such file or directory");
    ASSERT_TRUE(make());
    const ZPKResult<ZPKRunFile> file = ZPKRunFile::open(output());
    ASSERT_TRUE(file);
    const ZPKOutcome placed = ZPKRunFilePlacer(*file).placeIn(folder / "nowhere");
    ASSERT_FALSE(placed);
    EXPECT_EQ(placed.failure().message(), (folder / "nowhere") + ": No such file or directory");
}

TEST_F(ZPKRunFileTest, LimitOfFileSizeIsAFailureOfBothSides) {
    writeFile(bundle + "/noise", noise(2 << 20));
    ASSERT_TRUE(make());
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit before{};
    ::getrlimit(RLIMIT_FSIZE, &before);
    const rlimit small{1 << 20, before.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &small);
    const ZPKOutcome placed = place(output());
    const ZPKOutcome made =
        ZPKRunFileWriter(folder / "program", bundle, "Contents/program").write(folder / "B.run");
    ::setrlimit(RLIMIT_FSIZE, &before);
    ASSERT_FALSE(placed);
    EXPECT_EQ(placed.failure().path(), (folder / "placed/A.app/noise"));
    EXPECT_EQ(placed.failure().reason(), "File too large");
    ASSERT_FALSE(made);
    EXPECT_EQ(made.failure().reason(), "File too large");
    // Neither the file nor the growing one beside it.
    for (const auto& item : std::filesystem::directory_iterator(folder.path())) {
        const std::string name = item.path().filename();
        EXPECT_TRUE(name != "B.run" && !name.starts_with(".")) << name;
    }
}

TEST_F(ZPKRunFileTest, BundleWithAPipeCannotBePacked) {
    ASSERT_EQ(::mkfifo((bundle + "/pipe").c_str(), 0600), 0);
    const ZPKOutcome made = make();
    ASSERT_FALSE(made);
    EXPECT_EQ(made.failure().path(), bundle + "/pipe");
}

}  // namespace
