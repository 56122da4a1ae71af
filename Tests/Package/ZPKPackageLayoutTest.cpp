// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Package/ZPKPackageLayout.h"

#include <gtest/gtest.h>

namespace {

using Content = ZPKPackageLayout::Content;

TEST(ZPKPackageLayoutTest, TheTwoContentsHaveTheirFoldersAndArchives) {
    EXPECT_STREQ(ZPKPackageLayout::name(Content::Info), "Info");
    EXPECT_STREQ(ZPKPackageLayout::name(Content::Data), "Data");
    EXPECT_EQ(ZPKPackageLayout::folder("/s", Content::Info), "/s/Info");
    EXPECT_EQ(ZPKPackageLayout::folder("/s", Content::Data), "/s/Data");
    EXPECT_EQ(ZPKPackageLayout::plainArchive("/s", Content::Info), "/s/Info.dat");
    EXPECT_EQ(ZPKPackageLayout::plainArchive("/s", Content::Data), "/s/Data.dat");
    EXPECT_EQ(ZPKPackageLayout::scrambledArchive("/r", Content::Info), "/r/Info.datx");
    EXPECT_EQ(ZPKPackageLayout::scrambledArchive("/r", Content::Data), "/r/Data.datx");
}

TEST(ZPKPackageLayoutTest, DescriptionsStandInTheirFolders) {
    EXPECT_EQ(ZPKPackageLayout::conditionDescription("/s"), "/s/Info/Condition.xml");
    EXPECT_EQ(ZPKPackageLayout::startupDescription("/s"), "/s/Info/Startup.xml");
    EXPECT_EQ(ZPKPackageLayout::languageFolder("/r"), "/r/UILang");
    EXPECT_EQ(ZPKPackageLayout::languageList("/r"), "/r/UILang/Languages.xml");
    EXPECT_EQ(ZPKPackageLayout::packageStrings("/source"), "/source/Package.strings");
}

TEST(ZPKPackageLayoutTest, OneStagingFolderForAllLaunchers) {
    EXPECT_EQ(ZPKPackageLayout::stagingFolder("/tmp"), "/tmp/VarnoZPK_TEMP");
    EXPECT_STREQ(ZPKPackageLayout::kArchiveTool, "ditto");
    EXPECT_STREQ(ZPKPackageLayout::kDataFolderToken, "$Data$");
}

}  // namespace
