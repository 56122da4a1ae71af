// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include <cstdint>
#include <filesystem>
#include <string>

#include "Archive/GzipMember.h"
#include "Archive/InputFile.h"
#include "Tests/Archive/HostileArchiveFixture.h"

namespace {

namespace fs = std::filesystem;
using namespace zpk_test;

class DamagedArchiveTest : public HostileArchiveTest {
protected:
    void SetUp() override {
        HostileArchiveTest::SetUp();
        writeFile(m_folder / "in/D/a", "the contents of a");
        writeFile(m_folder / "in/D/sub/b", std::string(3000, 'b') + "end");
        fs::create_symlink("a", m_folder / "in/D/link");
        ASSERT_EQ(create(m_folder / "in/D", m_folder / "archive").exitStatus, 0);
        m_good = readFile(m_folder / "archive");
        ASSERT_LT(m_good.size(), 1500U);
    }

    bool extractBytes(const std::string& bytes) {
        KeepingSink sink;
        writeFile(m_folder / "archive", bytes);
        bool good = zpk_archive::extract(m_folder / "archive", m_folder / "in/out", sink);
        EXPECT_EQ(good, sink.errors.empty());
        m_lastError = sink.errors.empty() ? "" : sink.errors.back();
        return good;
    }

    void expectRefusal(const std::string& bytes, const std::string& reason) {
        EXPECT_FALSE(extractBytes(bytes));
        EXPECT_NE(m_lastError.find(reason), std::string::npos) << m_lastError;
    }

    std::string m_good;
    std::string m_lastError;
};

TEST_F(DamagedArchiveTest, CutAtEveryOffsetIsAnError) {
    for (std::size_t size = 0; size < m_good.size(); ++size) {
        EXPECT_FALSE(extractBytes(m_good.substr(0, size))) << size;
    }
    EXPECT_TRUE(extractBytes(m_good));
}

TEST_F(DamagedArchiveTest, ForeignGzipCutAtEveryOffsetIsAnError) {
    shell("cd '" + (m_folder / "in") + "'; bsdtar --format cpio -cf - D | gzip > ../archive");
    std::string good = readFile(m_folder / "archive");
    for (std::size_t size = 0; size < good.size(); ++size) {
        EXPECT_FALSE(extractBytes(good.substr(0, size))) << size;
    }
    EXPECT_TRUE(extractBytes(good));
}

TEST_F(DamagedArchiveTest, Bzip2CutAtEveryOffsetIsAnError) {
    if (!hasProgram("bzip2")) {
        GTEST_SKIP() << "bzip2 is not installed";
    }
    shell("cd '" + (m_folder / "in") + "'; bsdtar --format cpio -cf - D | bzip2 > ../archive");
    std::string good = readFile(m_folder / "archive");
    for (std::size_t size = 0; size < good.size(); ++size) {
        EXPECT_FALSE(extractBytes(good.substr(0, size))) << size;
    }
    EXPECT_TRUE(extractBytes(good));
}

TEST_F(DamagedArchiveTest, BytesAfterABzip2ArchiveThatAreNoBzip2AreAnError) {
    shell("cd '" + (m_folder / "in") + "'; bsdtar --format cpio -cf - D | bzip2 > ../archive");
    const std::string good = readFile(m_folder / "archive");
    EXPECT_TRUE(extractBytes(good + std::string(1000, '\0')));
    const char* const reason = "bytes that are no bzip2 data follow the archive";
    expectRefusal(good + "appended", reason);
    expectRefusal(good + std::string(1000, '\0') + "appended", reason);
}

TEST_F(DamagedArchiveTest, FlippedBitsInTheDataAreErrorsAndNeverEscape) {
    shell("cd '" + (m_folder / "in") + "'; bsdtar --format cpio -cf - D | gzip -n > ../archive");
    for (const std::string& good : {m_good, readFile(m_folder / "archive")}) {
        std::size_t unnoticed = 0;
        for (std::size_t at = 0; at < good.size(); ++at) {
            std::string bad = good;
            bad[at] = static_cast<char>(bad[at] ^ (1 << (at % 8)));
            fs::remove_all(m_folder / "in/out");
            // Some bits of a gzip file mean nothing.
            if (extractBytes(bad)) {
                EXPECT_EQ(snapshot(m_folder / "in/out/D"), snapshot(m_folder / "in/D")) << at;
                ++unnoticed;
            }
        }
        EXPECT_LT(unnoticed, 30U);
    }
}

TEST_F(DamagedArchiveTest, FlippedBitsInPlainArchivesNeverEscape) {
    std::vector<RawMember> members = {{"D", kFolder, "", 1, 2},
                                      {"D/a", kFile, "contents", 2, 2},
                                      {"D/b", kFile, "contents", 2, 2},
                                      {"D/l", kLink, "a", 3},
                                      {"D/._a", kFile, "x", 4}};
    for (const std::string& good : {makeOdc(members), makeNewc(members)}) {
        for (std::size_t at = 0; at < good.size(); ++at) {
            std::string bad = good;
            bad[at] = static_cast<char>(bad[at] ^ (1 << (at * 3 % 8)));
            KeepingSink sink;
            writeFile(m_folder / "archive", bad);
            zpk_archive::extract(m_folder / "archive", m_folder / "in/flipped", sink);
        }
    }
}

TEST_F(DamagedArchiveTest, MemberWhoseDataHaveAnotherLengthThanItStatesIsAnError) {
    zpk_archive::InputFile input(m_folder / "archive");
    const auto stated = zpk_archive::readGzipMemberHeader(input);
    ASSERT_TRUE(stated.has_value());
    const std::string data = m_good.substr(zpk_archive::kGzipMemberHeaderSize);
    ASSERT_EQ(data.size(), stated->packed);
    const auto withSizes = [&](std::uint32_t packed, std::uint32_t plain, const std::string& bytes) {
        const auto header = zpk_archive::makeGzipMemberHeader({packed, plain});
        return std::string(header.begin(), header.end()) + bytes;
    };
    EXPECT_TRUE(extractBytes(withSizes(stated->packed, stated->plain, data)));
    EXPECT_FALSE(extractBytes(withSizes(stated->packed + 7, stated->plain, data + "rubbish")));
    EXPECT_FALSE(extractBytes(withSizes(stated->packed, stated->plain + 1, data)));
    EXPECT_FALSE(extractBytes(withSizes(stated->packed, stated->plain - 1, data)));
    EXPECT_FALSE(extractBytes(withSizes(stated->packed - 1, stated->plain, data)));
}

TEST_F(DamagedArchiveTest, TrailerThatTellsOfOtherDataIsAnError) {
    for (std::size_t fromEnd = 1; fromEnd <= zpk_archive::kGzipMemberTrailerSize; ++fromEnd) {
        std::string bad = m_good;
        bad[bad.size() - fromEnd] = static_cast<char>(bad[bad.size() - fromEnd] ^ 1);
        expectRefusal(bad, "the compressed data are damaged (checksum)");
    }
}

TEST_F(DamagedArchiveTest, BytesAfterTheArchiveThatAreNoGzipAreAnError) {
    EXPECT_TRUE(extractBytes(m_good + std::string(1000, '\0')));
    const char* const reason = "bytes that are no gzip data follow the archive";
    expectRefusal(m_good + "appended", reason);
    expectRefusal(m_good + std::string(1000, '\0') + "appended", reason);
}

}  // namespace
