// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Package/ZPKScrambler.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>

#include "Tests/Support/TemporaryFolder.h"

namespace {

using zpk_test::readFile;
using zpk_test::writeFile;

class ZPKScramblerTest : public ::testing::Test {
protected:
    zpk_test::TemporaryFolder m_folder;
    const std::string m_plain = m_folder / "plain";
    const std::string m_scrambled = m_folder / "scrambled";
};

TEST_F(ZPKScramblerTest, ComesBackAsItWas) {
    const std::string contents = std::string(102400, 'a') + "the end";
    writeFile(m_plain, contents);
    ASSERT_TRUE(ZPKScrambler::scramble(m_plain, m_scrambled));
    EXPECT_EQ(readFile(m_scrambled), "the end" + std::string(102400, 'a'));
    ASSERT_TRUE(ZPKScrambler::unscramble(m_scrambled, m_plain));
    EXPECT_EQ(readFile(m_plain), contents);
}

TEST_F(ZPKScramblerTest, InItsOwnPlaceNothingIsLeftBesideIt) {
    writeFile(m_plain, std::string(102400, 'a') + "the end");
    ASSERT_TRUE(ZPKScrambler::scramble(m_plain, m_plain));
    EXPECT_EQ(readFile(m_plain), "the end" + std::string(102400, 'a'));
    std::filesystem::remove(m_plain);
    EXPECT_TRUE(std::filesystem::is_empty(m_folder.path()));
}

TEST_F(ZPKScramblerTest, AFailureNamesTheFileAndTheCause) {
    const ZPKOutcome missing = ZPKScrambler::scramble(m_plain, m_scrambled);
    ASSERT_FALSE(missing);
    EXPECT_EQ(missing.failure().path(), m_plain);
    EXPECT_EQ(missing.failure().reason(), "No such file or directory");
    EXPECT_EQ(readFile(m_scrambled), "");

    writeFile(m_plain, "short");
    const ZPKOutcome nowhere = ZPKScrambler::scramble(m_plain, m_folder / "missing/scrambled");
    ASSERT_FALSE(nowhere);
    EXPECT_EQ(nowhere.failure().path(), m_folder / "missing/scrambled");
    EXPECT_EQ(nowhere.failure().reason(), "No such file or directory");
}

TEST_F(ZPKScramblerTest, AShortFileIsNotCopiedOverAnother) {
    writeFile(m_scrambled, "short");
    writeFile(m_plain, "kept");
    const ZPKOutcome outcome = ZPKScrambler::unscramble(m_scrambled, m_plain);
    ASSERT_FALSE(outcome);
    EXPECT_EQ(outcome.failure().path(), m_plain);
    EXPECT_EQ(readFile(m_plain), "kept");
}

TEST_F(ZPKScramblerTest, AFileIsShortUpToTheRotationItself) {
    writeFile(m_scrambled, std::string(102400, 's'));
    writeFile(m_plain, "kept");
    EXPECT_FALSE(ZPKScrambler::unscramble(m_scrambled, m_plain));
    EXPECT_EQ(readFile(m_plain), "kept");

    writeFile(m_scrambled, "s" + std::string(102400, 'f'));
    EXPECT_TRUE(ZPKScrambler::unscramble(m_scrambled, m_plain));
    EXPECT_EQ(readFile(m_plain), std::string(102400, 'f') + "s");
}

TEST_F(ZPKScramblerTest, PiecesAreThoseThatUnscramblingPutsTogether) {
    for (const std::size_t size : {0U, 1U, 102399U, 102400U, 102401U, 300000U}) {
        SCOPED_TRACE(size);
        std::string contents(size, 's');
        std::fill(contents.begin() + static_cast<std::ptrdiff_t>(size / 3), contents.end(), 't');
        std::fill(contents.begin() + static_cast<std::ptrdiff_t>(size / 2), contents.end(), 'u');
        writeFile(m_scrambled, contents);
        std::filesystem::remove(m_plain);
        ASSERT_TRUE(ZPKScrambler::unscramble(m_scrambled, m_plain));
        std::string joined;
        for (const auto& piece : ZPKScrambler::piecesOfPlain(size)) {
            ASSERT_LE(piece.offset, size);
            ASSERT_LE(piece.size, size - piece.offset);
            joined += contents.substr(piece.offset, piece.size);
        }
        EXPECT_TRUE(joined == readFile(m_plain));
    }
}

}  // namespace
