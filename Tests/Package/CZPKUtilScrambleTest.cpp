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
#include "Tests/Support/Pattern.h"
#include "Tests/Support/TemporaryFolder.h"

namespace {

using varno_zpk::CZPKUtil;
using zpk_test::pattern;
using zpk_test::readFile;
using zpk_test::TemporaryFolder;
using zpk_test::writeFile;

constexpr std::size_t kRotation = 102400;

std::string scrambled(const std::string& plain) {
    return plain.size() > kRotation ? plain.substr(kRotation) + plain.substr(0, kRotation) : plain;
}

class CZPKUtilRotationTest : public ::testing::TestWithParam<std::size_t> {};

TEST_P(CZPKUtilRotationTest, UnscramblingGivesTheFileBack) {
    const TemporaryFolder folder;
    const std::string plain = pattern(GetParam());
    writeFile(folder / "plain", plain);
    CZPKUtil::Fake(folder / "plain", folder / "scrambled");
    EXPECT_TRUE(readFile(folder / "scrambled") == scrambled(plain));
    CZPKUtil::Unfake(folder / "scrambled", folder / "again");
    EXPECT_TRUE(readFile(folder / "again") == plain);
}

INSTANTIATE_TEST_SUITE_P(Sizes, CZPKUtilRotationTest,
                         ::testing::Values(0, 1, 4096, 102399, 102400, 102401, 104448, 204799, 204800, 204801,
                                           3000007));

TEST(CZPKUtilScrambleTest, OneByteOverTheRotationStartsWithTheLastByte) {
    const TemporaryFolder folder;
    const std::string plain = std::string(kRotation, 'a') + "z";
    writeFile(folder / "plain", plain);
    CZPKUtil::Fake(folder / "plain", folder / "scrambled");
    EXPECT_TRUE(readFile(folder / "scrambled") == "z" + std::string(kRotation, 'a'));
}

TEST(CZPKUtilScrambleTest, ScrambledFormIsARotationNotAnInvolution) {
    const TemporaryFolder folder;
    const std::string plain = pattern(3 * kRotation + 5);
    writeFile(folder / "file", plain);
    CZPKUtil::Fake(folder / "file", folder / "once");
    CZPKUtil::Fake(folder / "once", folder / "twice");
    EXPECT_TRUE(readFile(folder / "twice") == scrambled(scrambled(plain)));
    CZPKUtil::Unfake(folder / "file", folder / "unscrambled");
    EXPECT_TRUE(readFile(folder / "unscrambled") ==
                plain.substr(plain.size() - kRotation) + plain.substr(0, plain.size() - kRotation));
}

TEST(CZPKUtilScrambleTest, UnfakeReplacesAnExistingFileOnlyForALargeSource) {
    const TemporaryFolder folder;
    for (const std::size_t size : {std::size_t{0}, std::size_t{5}, kRotation}) {
        writeFile(folder / "small", pattern(size));
        writeFile(folder / "destination", "old");
        CZPKUtil::Unfake(folder / "small", folder / "destination");
        EXPECT_EQ(readFile(folder / "destination"), "old") << size;
    }
    const std::string plain = pattern(kRotation + 1);
    writeFile(folder / "large", scrambled(plain));
    writeFile(folder / "destination", std::string(500000, 'o'));
    CZPKUtil::Unfake(folder / "large", folder / "destination");
    EXPECT_TRUE(readFile(folder / "destination") == plain);
}

TEST(CZPKUtilScrambleTest, FakeReplacesAnExistingFileOfAnySize) {
    const TemporaryFolder folder;
    for (const std::size_t size : {std::size_t{0}, std::size_t{5}, kRotation + 1}) {
        writeFile(folder / "source", pattern(size));
        writeFile(folder / "destination", std::string(500000, 'o'));
        CZPKUtil::Fake(folder / "source", folder / "destination");
        EXPECT_TRUE(readFile(folder / "destination") == scrambled(pattern(size))) << size;
    }
}

TEST(CZPKUtilScrambleTest, MissingSourceLeavesAnEmptyFileOrNone) {
    const TemporaryFolder folder;
    CZPKUtil::Fake(folder / "missing", folder / "scrambled");
    EXPECT_EQ(readFile(folder / "scrambled"), "");
    CZPKUtil::Unfake(folder / "missing", folder / "plain");
    EXPECT_FALSE(std::filesystem::exists(folder / "plain"));
    writeFile(folder / "existing", "old");
    CZPKUtil::Unfake(folder / "missing", folder / "existing");
    EXPECT_EQ(readFile(folder / "existing"), "old");
    CZPKUtil::Fake(folder / "missing", folder / "existing");
    EXPECT_EQ(readFile(folder / "existing"), "");
    std::filesystem::create_symlink("nowhere", folder / "dangling");
    CZPKUtil::Unfake(folder / "dangling", folder / "plain");
    EXPECT_FALSE(std::filesystem::exists(std::filesystem::symlink_status(folder / "plain")));
}

TEST(CZPKUtilScrambleTest, UnreadableSourceCountsAsMissing) {
    const TemporaryFolder folder;
    ::chmod(folder.path().c_str(), 0777);
    for (const std::size_t size : {std::size_t{5}, 2 * kRotation}) {
        std::filesystem::remove(folder / "closed");
        writeFile(folder / "closed", pattern(size));
        ::chmod((folder / "closed").c_str(), 0000);
        EXPECT_TRUE(zpk_test::answerWithoutPrivileges([&] {
            CZPKUtil::Unfake(folder / "closed", folder / "plain");
            CZPKUtil::Fake(folder / "closed", folder / "scrambled");
            return true;
        }));
        EXPECT_FALSE(std::filesystem::exists(folder / "plain")) << size;
        EXPECT_EQ(readFile(folder / "scrambled"), "") << size;
    }
}

TEST(CZPKUtilScrambleTest, SourceBehindALinkIsTheFileItself) {
    const TemporaryFolder folder;
    for (const std::size_t size : {std::size_t{5}, 2 * kRotation}) {
        const std::string plain = pattern(size);
        writeFile(folder / "elsewhere/file", scrambled(plain));
        std::filesystem::remove(folder / "link");
        std::filesystem::create_symlink("elsewhere/file", folder / "link");
        std::filesystem::remove(folder / "plain");
        CZPKUtil::Unfake(folder / "link", folder / "plain");
        EXPECT_TRUE(readFile(folder / "plain") == plain) << size;
        EXPECT_FALSE(std::filesystem::is_symlink(folder / "plain")) << size;
    }
}

TEST(CZPKUtilScrambleTest, DestinationLinkIsReplacedNotWrittenThrough) {
    const TemporaryFolder folder;
    const std::string plain = pattern(2 * kRotation);
    writeFile(folder / "source", plain);
    writeFile(folder / "outside", "kept");
    for (const auto operation : {&CZPKUtil::Fake, &CZPKUtil::Unfake}) {
        std::filesystem::remove(folder / "link");
        std::filesystem::create_symlink("outside", folder / "link");
        operation(folder / "source", folder / "link");
        EXPECT_FALSE(std::filesystem::is_symlink(folder / "link"));
        EXPECT_EQ(std::filesystem::file_size(folder / "link"), plain.size());
    }
    writeFile(folder / "small", "small");
    std::filesystem::create_symlink("made", folder / "dangling");
    CZPKUtil::Unfake(folder / "small", folder / "dangling");
    EXPECT_FALSE(std::filesystem::exists(folder / "made"))
        << "a small file is not written through a link either";
    EXPECT_EQ(readFile(folder / "outside"), "kept");
}

TEST(CZPKUtilScrambleTest, FileMayBeScrambledInItsOwnPlace) {
    const TemporaryFolder folder;
    const std::string plain = pattern(2 * kRotation + 3);
    writeFile(folder / "file", plain);
    CZPKUtil::Fake(folder / "file", folder / "file");
    EXPECT_TRUE(readFile(folder / "file") == scrambled(plain));
    CZPKUtil::Unfake(folder / "file", folder / "./file");
    EXPECT_TRUE(readFile(folder / "file") == plain);
    writeFile(folder / "file", "small");
    CZPKUtil::Unfake(folder / "file", folder / "file");
    CZPKUtil::Fake(folder / "file", folder / "file");
    EXPECT_EQ(readFile(folder / "file"), "small");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 1)
        << "nothing is left beside";
}

TEST(CZPKUtilScrambleTest, FileInItsOwnPlaceSurvivesAFullDisk) {
    const TemporaryFolder folder;
    const std::string plain = pattern(4 * kRotation);
    writeFile(folder / "file", plain);
    // Stands for a full disk: no file may grow beyond the limit.
    const rlimit limit{2 * kRotation, RLIM_INFINITY};
    ::signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
    CZPKUtil::Fake(folder / "file", folder / "file");
    CZPKUtil::Unfake(folder / "file", folder / "file");
    CZPKUtil::Fake(folder / "file", folder / "partial");
    const rlimit none{RLIM_INFINITY, RLIM_INFINITY};
    ::setrlimit(RLIMIT_FSIZE, &none);
    EXPECT_TRUE(readFile(folder / "file") == plain);
    EXPECT_TRUE(readFile(folder / "partial") == scrambled(plain).substr(0, 2 * kRotation)) << "a part stays";
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 2);
}

TEST(CZPKUtilScrambleTest, OddSourcesNeitherHangNorCrash) {
    const TemporaryFolder folder;
    ASSERT_EQ(::mkfifo((folder / "fifo").c_str(), 0666), 0);
    writeFile(folder / "tree/file", "x");
    for (const std::string& source : {folder / "fifo", std::string("/dev/zero"), std::string()}) {
        CZPKUtil::Fake(source, folder / "scrambled");
        EXPECT_EQ(readFile(folder / "scrambled"), "") << source;
        CZPKUtil::Unfake(source, folder / "plain");
        EXPECT_FALSE(std::filesystem::exists(folder / "plain")) << source;
    }
    CZPKUtil::Fake(folder / "tree", folder / "scrambled");
    EXPECT_EQ(readFile(folder / "scrambled"), "");
    CZPKUtil::Unfake(folder / "tree", folder / "copied");
    EXPECT_EQ(readFile(folder / "copied/file"), "x") << "a folder is small, and copied like any small item";
}

TEST(CZPKUtilScrambleTest, DestinationsThatCannotBeWrittenStayAsTheyAre) {
    const TemporaryFolder folder;
    writeFile(folder / "source", pattern(2 * kRotation));
    writeFile(folder / "tree/file", "kept");
    for (const auto operation : {&CZPKUtil::Fake, &CZPKUtil::Unfake}) {
        operation(folder / "source", folder / "tree");
        operation(folder / "source", folder / "missing/destination");
        operation(folder / "source", "");
    }
    EXPECT_EQ(readFile(folder / "tree/file"), "kept");
    EXPECT_FALSE(std::filesystem::exists(folder / "missing"));
}

/// A gigabyte without any two equal blocks, written in pieces.
void writeGigabyte(const std::string& path) {
    constexpr std::size_t kPieces = 256;
    std::string piece = pattern(4 * 1024 * 1024);
    std::ofstream file(path, std::ios::binary);
    for (std::size_t index = 0; index < kPieces; ++index) {
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
bool hasSameBytes(const std::string& path, std::streamoff offset, const std::string& otherPath,
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

long peakMemoryKilobytes() {
    rusage usage;
    ::getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

TEST(CZPKUtilScrambleTest, GigabyteIsRotatedWithoutBeingHeldInMemory) {
    const TemporaryFolder folder;
    constexpr std::size_t kSize = 1024 * 1024 * 1024;
    if (std::filesystem::space(folder.path()).available < 4 * std::uintmax_t{kSize}) {
        GTEST_SKIP() << "too little disk space";
    }
    writeGigabyte(folder / "plain");
    const long before = peakMemoryKilobytes();
    CZPKUtil::Fake(folder / "plain", folder / "scrambled");
    CZPKUtil::Unfake(folder / "scrambled", folder / "again");
    EXPECT_LT(peakMemoryKilobytes() - before, 4 * 1024);
    ASSERT_EQ(std::filesystem::file_size(folder / "scrambled"), kSize);
    ASSERT_EQ(std::filesystem::file_size(folder / "again"), kSize);
    EXPECT_TRUE(hasSameBytes(folder / "scrambled", 0, folder / "plain", kRotation, kSize - kRotation));
    EXPECT_TRUE(hasSameBytes(folder / "scrambled", kSize - kRotation, folder / "plain", 0, kRotation));
    EXPECT_TRUE(hasSameBytes(folder / "again", 0, folder / "plain", 0, kSize));
}

/// A file that the user may write in a folder in which nothing may be made or removed.
class CZPKUtilClosedFolderTest : public ::testing::Test {
protected:
    CZPKUtilClosedFolderTest() {
        writeFile(m_source, m_plain);
        writeFile(m_destination, std::string(m_plain.size() + 5000, 'o'));
        for (const std::string& path : {m_folder.path(), m_source, m_folder / "closed", m_destination}) {
            zpk_test::giveToUserWithoutPrivileges(path);
        }
        std::filesystem::permissions(m_folder / "closed", std::filesystem::perms(0555));
    }
    ~CZPKUtilClosedFolderTest() override {
        std::filesystem::permissions(m_folder / "closed", std::filesystem::perms::owner_all);
    }

    void runAsUser(const std::function<void()>& action) {
        EXPECT_TRUE(zpk_test::answerWithoutPrivileges([&] {
            action();
            return true;
        }));
    }

    const TemporaryFolder m_folder;
    const std::string m_plain = pattern(3 * kRotation + 7);
    const std::string m_source = m_folder / "source";
    const std::string m_destination = m_folder / "closed/destination";
};

TEST_F(CZPKUtilClosedFolderTest, ContentsAreReplacedWhereTheFileCannotBe) {
    runAsUser([&] { CZPKUtil::Fake(m_source, m_destination); });
    EXPECT_TRUE(readFile(m_destination) == scrambled(m_plain));
    runAsUser([&] { CZPKUtil::Unfake(m_destination, m_folder / "again"); });
    EXPECT_TRUE(readFile(m_folder / "again") == m_plain);
    writeFile(m_source, scrambled(m_plain));
    writeFile(m_destination, std::string(m_plain.size() + 5000, 'o'));
    runAsUser([&] { CZPKUtil::Unfake(m_source, m_destination); });
    EXPECT_TRUE(readFile(m_destination) == m_plain);
}

TEST_F(CZPKUtilClosedFolderTest, SmallFileIsReplacedByFakeAndKeptByUnfake) {
    writeFile(m_source, "small");
    writeFile(m_destination, "kept");
    runAsUser([&] { CZPKUtil::Unfake(m_source, m_destination); });
    EXPECT_EQ(readFile(m_destination), "kept");
    runAsUser([&] { CZPKUtil::Fake(m_source, m_destination); });
    EXPECT_EQ(readFile(m_destination), "small");
}

TEST_F(CZPKUtilClosedFolderTest, MissingSourceLeavesItEmpty) {
    runAsUser([&] { CZPKUtil::Fake(m_folder / "none", m_destination); });
    EXPECT_EQ(readFile(m_destination), "");
}

TEST_F(CZPKUtilClosedFolderTest, FileThatMayNotBeWrittenIsLeft) {
    writeFile(m_destination, "kept");
    std::filesystem::permissions(m_destination, std::filesystem::perms(0444));
    runAsUser([&] { CZPKUtil::Fake(m_source, m_destination); });
    EXPECT_EQ(readFile(m_destination), "kept");
}

TEST_F(CZPKUtilClosedFolderTest, LinkIsNotFollowed) {
    std::filesystem::permissions(m_folder / "closed", std::filesystem::perms::owner_all);
    writeFile(m_folder / "other", "kept");
    zpk_test::giveToUserWithoutPrivileges(m_folder / "other");
    std::filesystem::create_symlink("../other", m_folder / "closed/link");
    std::filesystem::permissions(m_folder / "closed", std::filesystem::perms(0555));
    runAsUser([&] { CZPKUtil::Fake(m_source, m_folder / "closed/link"); });
    EXPECT_EQ(readFile(m_folder / "other"), "kept");
}

}  // namespace
