// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>

#include "Package/CZPKUtil.h"
#include "Tests/Platform/OtherUser.h"
#include "Tests/Support/TemporaryFolder.h"

namespace {

using varno_zpk::CZPKUtil;
using zpk_test::ReadFile;
using zpk_test::TemporaryFolder;
using zpk_test::WriteFile;

constexpr std::size_t rotation = 102400;

std::string Pattern(std::size_t length) {
    std::string bytes(length, '\0');
    unsigned int state = 7;
    for (char& byte : bytes) {
        state = state * 1103515245 + 12345;
        byte = static_cast<char>(state >> 16);
    }
    return bytes;
}

std::string Scrambled(const std::string& plain) {
    return plain.size() > rotation ? plain.substr(rotation) + plain.substr(0, rotation) : plain;
}

class CZPKUtilRotationTest : public ::testing::TestWithParam<std::size_t> {};

TEST_P(CZPKUtilRotationTest, UnscramblingGivesTheFileBack) {
    const TemporaryFolder folder;
    const std::string plain = Pattern(GetParam());
    WriteFile(folder / "plain", plain);
    CZPKUtil::Fake(folder / "plain", folder / "scrambled");
    EXPECT_TRUE(ReadFile(folder / "scrambled") == Scrambled(plain));
    CZPKUtil::Unfake(folder / "scrambled", folder / "again");
    EXPECT_TRUE(ReadFile(folder / "again") == plain);
}

INSTANTIATE_TEST_SUITE_P(Sizes, CZPKUtilRotationTest,
                         ::testing::Values(0, 1, 4096, 102399, 102400, 102401, 104448, 204799, 204800, 204801,
                                           3000007));

TEST(CZPKUtilScrambleTest, OneByteOverTheRotationStartsWithTheLastByte) {
    const TemporaryFolder folder;
    const std::string plain = std::string(rotation, 'a') + "z";
    WriteFile(folder / "plain", plain);
    CZPKUtil::Fake(folder / "plain", folder / "scrambled");
    EXPECT_TRUE(ReadFile(folder / "scrambled") == "z" + std::string(rotation, 'a'));
}

TEST(CZPKUtilScrambleTest, ScrambledFormIsARotationNotAnInvolution) {
    const TemporaryFolder folder;
    const std::string plain = Pattern(3 * rotation + 5);
    WriteFile(folder / "file", plain);
    CZPKUtil::Fake(folder / "file", folder / "once");
    CZPKUtil::Fake(folder / "once", folder / "twice");
    EXPECT_TRUE(ReadFile(folder / "twice") == Scrambled(Scrambled(plain)));
    CZPKUtil::Unfake(folder / "file", folder / "unscrambled");
    EXPECT_TRUE(ReadFile(folder / "unscrambled") ==
                plain.substr(plain.size() - rotation) + plain.substr(0, plain.size() - rotation));
}

TEST(CZPKUtilScrambleTest, UnfakeReplacesAnExistingFileOnlyForALargeSource) {
    const TemporaryFolder folder;
    for (const std::size_t size : {std::size_t{0}, std::size_t{5}, rotation}) {
        WriteFile(folder / "small", Pattern(size));
        WriteFile(folder / "destination", "old");
        CZPKUtil::Unfake(folder / "small", folder / "destination");
        EXPECT_EQ(ReadFile(folder / "destination"), "old") << size;
    }
    const std::string plain = Pattern(rotation + 1);
    WriteFile(folder / "large", Scrambled(plain));
    WriteFile(folder / "destination", std::string(500000, 'o'));
    CZPKUtil::Unfake(folder / "large", folder / "destination");
    EXPECT_TRUE(ReadFile(folder / "destination") == plain);
}

TEST(CZPKUtilScrambleTest, FakeReplacesAnExistingFileOfAnySize) {
    const TemporaryFolder folder;
    for (const std::size_t size : {std::size_t{0}, std::size_t{5}, rotation + 1}) {
        WriteFile(folder / "source", Pattern(size));
        WriteFile(folder / "destination", std::string(500000, 'o'));
        CZPKUtil::Fake(folder / "source", folder / "destination");
        EXPECT_TRUE(ReadFile(folder / "destination") == Scrambled(Pattern(size))) << size;
    }
}

TEST(CZPKUtilScrambleTest, MissingSourceLeavesAnEmptyFileOrNone) {
    const TemporaryFolder folder;
    CZPKUtil::Fake(folder / "missing", folder / "scrambled");
    EXPECT_EQ(ReadFile(folder / "scrambled"), "");
    CZPKUtil::Unfake(folder / "missing", folder / "plain");
    EXPECT_FALSE(std::filesystem::exists(folder / "plain"));
    WriteFile(folder / "existing", "old");
    CZPKUtil::Unfake(folder / "missing", folder / "existing");
    EXPECT_EQ(ReadFile(folder / "existing"), "old");
    CZPKUtil::Fake(folder / "missing", folder / "existing");
    EXPECT_EQ(ReadFile(folder / "existing"), "");
    std::filesystem::create_symlink("nowhere", folder / "dangling");
    CZPKUtil::Unfake(folder / "dangling", folder / "plain");
    EXPECT_FALSE(std::filesystem::exists(std::filesystem::symlink_status(folder / "plain")));
}

TEST(CZPKUtilScrambleTest, UnreadableSourceCountsAsMissing) {
    const TemporaryFolder folder;
    ::chmod(folder.path().c_str(), 0777);
    for (const std::size_t size : {std::size_t{5}, 2 * rotation}) {
        std::filesystem::remove(folder / "closed");
        WriteFile(folder / "closed", Pattern(size));
        ::chmod((folder / "closed").c_str(), 0000);
        EXPECT_TRUE(zpk_test::AnswerWithoutPrivileges([&] {
            CZPKUtil::Unfake(folder / "closed", folder / "plain");
            CZPKUtil::Fake(folder / "closed", folder / "scrambled");
            return true;
        }));
        EXPECT_FALSE(std::filesystem::exists(folder / "plain")) << size;
        EXPECT_EQ(ReadFile(folder / "scrambled"), "") << size;
    }
}

TEST(CZPKUtilScrambleTest, SourceBehindALinkIsTheFileItself) {
    const TemporaryFolder folder;
    for (const std::size_t size : {std::size_t{5}, 2 * rotation}) {
        const std::string plain = Pattern(size);
        WriteFile(folder / "elsewhere/file", Scrambled(plain));
        std::filesystem::remove(folder / "link");
        std::filesystem::create_symlink("elsewhere/file", folder / "link");
        std::filesystem::remove(folder / "plain");
        CZPKUtil::Unfake(folder / "link", folder / "plain");
        EXPECT_TRUE(ReadFile(folder / "plain") == plain) << size;
        EXPECT_FALSE(std::filesystem::is_symlink(folder / "plain")) << size;
    }
}

TEST(CZPKUtilScrambleTest, DestinationLinkIsReplacedNotWrittenThrough) {
    const TemporaryFolder folder;
    const std::string plain = Pattern(2 * rotation);
    WriteFile(folder / "source", plain);
    WriteFile(folder / "outside", "kept");
    for (const auto operation : {&CZPKUtil::Fake, &CZPKUtil::Unfake}) {
        std::filesystem::remove(folder / "link");
        std::filesystem::create_symlink("outside", folder / "link");
        operation(folder / "source", folder / "link");
        EXPECT_FALSE(std::filesystem::is_symlink(folder / "link"));
        EXPECT_EQ(std::filesystem::file_size(folder / "link"), plain.size());
    }
    WriteFile(folder / "small", "small");
    std::filesystem::create_symlink("made", folder / "dangling");
    CZPKUtil::Unfake(folder / "small", folder / "dangling");
    EXPECT_FALSE(std::filesystem::exists(folder / "made"))
        << "a small file is not written through a link either";
    EXPECT_EQ(ReadFile(folder / "outside"), "kept");
}

TEST(CZPKUtilScrambleTest, FileMayBeScrambledInItsOwnPlace) {
    const TemporaryFolder folder;
    const std::string plain = Pattern(2 * rotation + 3);
    WriteFile(folder / "file", plain);
    CZPKUtil::Fake(folder / "file", folder / "file");
    EXPECT_TRUE(ReadFile(folder / "file") == Scrambled(plain));
    CZPKUtil::Unfake(folder / "file", folder / "./file");
    EXPECT_TRUE(ReadFile(folder / "file") == plain);
    WriteFile(folder / "file", "small");
    CZPKUtil::Unfake(folder / "file", folder / "file");
    CZPKUtil::Fake(folder / "file", folder / "file");
    EXPECT_EQ(ReadFile(folder / "file"), "small");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 1)
        << "nothing is left beside";
}

TEST(CZPKUtilScrambleTest, FileInItsOwnPlaceSurvivesAFullDisk) {
    const TemporaryFolder folder;
    const std::string plain = Pattern(4 * rotation);
    WriteFile(folder / "file", plain);
    // Stands for a full disk: no file may grow beyond the limit.
    const rlimit limit{2 * rotation, RLIM_INFINITY};
    ::signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
    CZPKUtil::Fake(folder / "file", folder / "file");
    CZPKUtil::Unfake(folder / "file", folder / "file");
    CZPKUtil::Fake(folder / "file", folder / "partial");
    const rlimit none{RLIM_INFINITY, RLIM_INFINITY};
    ::setrlimit(RLIMIT_FSIZE, &none);
    EXPECT_TRUE(ReadFile(folder / "file") == plain);
    EXPECT_TRUE(ReadFile(folder / "partial") == Scrambled(plain).substr(0, 2 * rotation)) << "a part stays";
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 2);
}

TEST(CZPKUtilScrambleTest, OddSourcesNeitherHangNorCrash) {
    const TemporaryFolder folder;
    ASSERT_EQ(::mkfifo((folder / "fifo").c_str(), 0666), 0);
    WriteFile(folder / "tree/file", "x");
    for (const std::string& source : {folder / "fifo", std::string("/dev/zero"), std::string()}) {
        CZPKUtil::Fake(source, folder / "scrambled");
        EXPECT_EQ(ReadFile(folder / "scrambled"), "") << source;
        CZPKUtil::Unfake(source, folder / "plain");
        EXPECT_FALSE(std::filesystem::exists(folder / "plain")) << source;
    }
    CZPKUtil::Fake(folder / "tree", folder / "scrambled");
    EXPECT_EQ(ReadFile(folder / "scrambled"), "");
    CZPKUtil::Unfake(folder / "tree", folder / "copied");
    EXPECT_EQ(ReadFile(folder / "copied/file"), "x") << "a folder is small, and copied like any small item";
}

TEST(CZPKUtilScrambleTest, DestinationsThatCannotBeWrittenStayAsTheyAre) {
    const TemporaryFolder folder;
    WriteFile(folder / "source", Pattern(2 * rotation));
    WriteFile(folder / "tree/file", "kept");
    for (const auto operation : {&CZPKUtil::Fake, &CZPKUtil::Unfake}) {
        operation(folder / "source", folder / "tree");
        operation(folder / "source", folder / "missing/destination");
        operation(folder / "source", "");
    }
    EXPECT_EQ(ReadFile(folder / "tree/file"), "kept");
    EXPECT_FALSE(std::filesystem::exists(folder / "missing"));
}

/// A gigabyte without any two equal blocks, written in pieces.
void WriteGigabyte(const std::string& path) {
    constexpr std::size_t pieces = 256;
    std::string piece = Pattern(4 * 1024 * 1024);
    std::ofstream file(path, std::ios::binary);
    for (std::size_t index = 0; index < pieces; ++index) {
        for (std::size_t at = 0; at < piece.size(); at += 4096) {
            piece[at] = static_cast<char>(index);
            piece[at + 1] = static_cast<char>(at >> 12);
            piece[at + 2] = static_cast<char>(at >> 20);
        }
        file << piece;
    }
    ASSERT_TRUE(file.good());
}

/// True when `file` from `offset` on is `other` from `otherOffset` on, over `length` bytes.
bool HasSameBytes(const std::string& path, std::streamoff offset, const std::string& otherPath,
                  std::streamoff otherOffset, std::size_t length) {
    std::ifstream file(path, std::ios::binary);
    std::ifstream other(otherPath, std::ios::binary);
    file.seekg(offset);
    other.seekg(otherOffset);
    std::string bytes(1024 * 1024, '\0');
    std::string otherBytes = bytes;
    while (length > 0) {
        const std::size_t count = std::min(length, bytes.size());
        file.read(bytes.data(), static_cast<std::streamsize>(count));
        other.read(otherBytes.data(), static_cast<std::streamsize>(count));
        if (!file || !other || bytes != otherBytes) {
            return false;
        }
        length -= count;
    }
    return true;
}

long PeakMemoryKilobytes() {
    rusage usage;
    ::getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

TEST(CZPKUtilScrambleTest, GigabyteIsRotatedWithoutBeingHeldInMemory) {
    const TemporaryFolder folder;
    constexpr std::size_t size = 1024 * 1024 * 1024;
    if (std::filesystem::space(folder.path()).available < 4 * std::uintmax_t{size}) {
        GTEST_SKIP() << "too little disk space";
    }
    WriteGigabyte(folder / "plain");
    const long before = PeakMemoryKilobytes();
    CZPKUtil::Fake(folder / "plain", folder / "scrambled");
    CZPKUtil::Unfake(folder / "scrambled", folder / "again");
    EXPECT_LT(PeakMemoryKilobytes() - before, 4 * 1024);
    ASSERT_EQ(std::filesystem::file_size(folder / "scrambled"), size);
    ASSERT_EQ(std::filesystem::file_size(folder / "again"), size);
    EXPECT_TRUE(HasSameBytes(folder / "scrambled", 0, folder / "plain", rotation, size - rotation));
    EXPECT_TRUE(HasSameBytes(folder / "scrambled", size - rotation, folder / "plain", 0, rotation));
    EXPECT_TRUE(HasSameBytes(folder / "again", 0, folder / "plain", 0, size));
}

}  // namespace
