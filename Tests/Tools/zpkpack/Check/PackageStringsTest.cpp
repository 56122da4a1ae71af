// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/Check/PackageStrings.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include "Tests/Support/TemporaryFolder.h"

namespace zpk_packager {

namespace {

class PackageStringsTest : public ::testing::Test {
protected:
    ZPKResult<PackageStrings> read(const std::string& contents) {
        zpk_test::writeFile(m_path, contents);
        return PackageStrings::read(m_path);
    }

    zpk_test::TemporaryFolder m_folder;
    std::string m_path = m_folder / "Package.strings";
};

TEST_F(PackageStringsTest, TakesCommentsOutsideOfTextsOnly) {
    const auto strings = read("#  one \n\"a#b\" = \"#c\\\"#\"; // # no\n'd#' = e; # two\r/* # no */#");
    ASSERT_TRUE(strings);
    ASSERT_EQ(strings->comments().size(), 3U);
    EXPECT_EQ(strings->comments()[0].text, "one");
    EXPECT_EQ(strings->comments()[0].offset, 0U);
    EXPECT_EQ(strings->comments()[1].text, "two");
    EXPECT_EQ(strings->comments()[1].offset, 43U);
    EXPECT_EQ(strings->comments()[2].text, "");
    std::size_t errorAt = 0;
    const auto entries = strings->entries(errorAt);
    ASSERT_TRUE(entries);
    EXPECT_EQ(entries->stringForKey("a#b"), "#c\"#");
    EXPECT_EQ(entries->stringForKey("d#"), "e");
}

TEST_F(PackageStringsTest, SaysWhereTheListIsMalformed) {
    for (const char* const text : {"a = b", "a b;", "a = \"b;", "/* a"}) {
        const auto strings = read("# x\nk = v; " + std::string(text));
        std::size_t errorAt = 0;
        ASSERT_TRUE(strings);
        EXPECT_FALSE(strings->entries(errorAt)) << text;
        EXPECT_GE(errorAt, 11U) << text;
        EXPECT_LE(errorAt, 11U + std::string(text).size()) << text;
    }
}

TEST_F(PackageStringsTest, TakesUTF16WithAMark) {
    const auto strings = read(std::string("\xFF\xFE#\0a\0\n\0k\0=\0v\0;\0", 16));
    ASSERT_TRUE(strings);
    EXPECT_EQ(strings->text(), "  \nk=v;");
}

TEST_F(PackageStringsTest, RefusesWhatIsNoText) {
    EXPECT_FALSE(PackageStrings::read(m_path));
    EXPECT_FALSE(read("\xFF"));
    EXPECT_FALSE(read(std::string(PackageStrings::kLargestFile + 1, ' ')));
    ASSERT_EQ(::unlink(m_path.c_str()), 0);
    ASSERT_EQ(::mkfifo(m_path.c_str(), 0600), 0);
    EXPECT_FALSE(PackageStrings::read(m_path));
}

}  // namespace

}  // namespace zpk_packager
