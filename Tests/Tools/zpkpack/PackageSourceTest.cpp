// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/PackageSource.h"

#include <gmock/gmock.h>

#include <filesystem>

#include "Tests/Tools/zpkpack/PackagerFixture.h"

using ::testing::HasSubstr;
using zpk_packager::PackageSource;

namespace zpk_test {

namespace {

class PackageSourceTest : public PackagerFixture {
protected:
    std::string failure() const {
        return failureOf([&] { PackageSource(source()).check(); });
    }
};

TEST_F(PackageSourceTest, AcceptsASourceWithAllPieces) {
    EXPECT_EQ(failure(), "");
}

TEST_F(PackageSourceTest, NamesTheFolderThatIsMissing) {
    std::filesystem::remove_all(source("Data"));
    EXPECT_THAT(failure(), HasSubstr("there is no folder " + source("Data")));
    std::filesystem::remove_all(source("Info"));
    EXPECT_THAT(failure(), HasSubstr("there is no folder " + source("Info")));
    std::filesystem::remove_all(source());
    EXPECT_THAT(failure(), HasSubstr("there is no folder " + source() + ": the package source"));
}

TEST_F(PackageSourceTest, TakesNoFileForAFolder) {
    std::filesystem::remove_all(source("Data"));
    writeFile(source("Data"), "");
    EXPECT_THAT(failure(), HasSubstr("there is no folder " + source("Data")));
}

TEST_F(PackageSourceTest, NamesTheDescriptionThatCannotBeLoaded) {
    writeFile(source("Info/Condition.xml"), "<a>");
    EXPECT_THAT(failure(), HasSubstr("Info/Condition.xml cannot be loaded"));
    writeFile(source("Info/Startup.xml"), "<Startup");
    EXPECT_THAT(failure(), HasSubstr("Info/Startup.xml cannot be loaded"));
}

TEST_F(PackageSourceTest, WantsALanguageListOnlyOfAPackageWithTexts) {
    EXPECT_FALSE(PackageSource(source()).hasLanguages());
    std::filesystem::create_directory(source("UILang"));
    EXPECT_TRUE(PackageSource(source()).hasLanguages());
    EXPECT_THAT(failure(), HasSubstr("UILang/Languages.xml cannot be loaded"));
    writeFile(source("UILang/Languages.xml"),
              "<Languages FallBackCode=\"en\"><Language Code=\"en\"/></Languages>");
    EXPECT_EQ(failure(), "");
}

}  // namespace

}  // namespace zpk_test
