// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/PackageDescription.h"

#include <gmock/gmock.h>

#include "Tests/Tools/zpkpack/PackagerFixture.h"

using ::testing::EndsWith;
using ::testing::HasSubstr;
using zpk_packager::PackageDescription;

namespace zpk_test {

namespace {

class PackageDescriptionTest : public PackagerFixture {
protected:
    std::string failureWith(const std::string& contents) const {
        writeFile(source("Package.strings"), contents);
        return failureOf([&] { PackageDescription::read(source()); });
    }
};

TEST_F(PackageDescriptionTest, GivesNameAndIdentifier) {
    const PackageDescription description = PackageDescription::read(source());
    EXPECT_EQ(description.bundleName, "Hello");
    EXPECT_EQ(description.bundleIdentifier, "com.example.Hello");
}

TEST_F(PackageDescriptionTest, TakesNamesInAnyLanguage) {
    writeFile(source("Package.strings"),
              "\"CFBundleName\" = \"まえ <&>\"; \"CFBundleIdentifier\" = \"com.example.まえ <&>\";");
    EXPECT_EQ(PackageDescription::read(source()).bundleName, "まえ <&>");
}

TEST_F(PackageDescriptionTest, SaysThatTheFileIsMissing) {
    EXPECT_THAT(failureOf([&] { PackageDescription::read(source("Data")); }),
                HasSubstr("Data/Package.strings is missing"));
}

TEST_F(PackageDescriptionTest, SaysThatTheFileIsNoList) {
    EXPECT_THAT(failureWith("\"CFBundleName\" = "), HasSubstr("is not a list of"));
}

TEST_F(PackageDescriptionTest, NamesTheKeyThatIsMissingOrEmpty) {
    EXPECT_THAT(failureWith("\"CFBundleIdentifier\" = \"com.example.A\";"),
                EndsWith("Package.strings: \"CFBundleName\" is missing"));
    EXPECT_THAT(failureWith("\"CFBundleName\" = \"A\";"), EndsWith("\"CFBundleIdentifier\" is missing"));
    EXPECT_THAT(failureWith("\"CFBundleName\" = \"\"; \"CFBundleIdentifier\" = \"com.example.A\";"),
                EndsWith("\"CFBundleName\" is missing"));
}

TEST_F(PackageDescriptionTest, RefusesCharactersThatNoNameMayHold) {
    for (const char* const name : {"a/b", "a\\nb", "a\\tb"}) {
        const std::string text =
            std::string("\"CFBundleName\" = \"") + name + "\"; \"CFBundleIdentifier\" = \"x." + name + "\";";
        EXPECT_THAT(failureWith(text), HasSubstr("\"CFBundleName\" holds a slash or a control character"))
            << name;
    }
}

TEST_F(PackageDescriptionTest, RefusesAnIdentifierThatDoesNotEndInTheName) {
    EXPECT_THAT(failureWith("\"CFBundleName\" = \"A\"; \"CFBundleIdentifier\" = \"com.example.B\";"),
                HasSubstr("the last part of the identifier \"com.example.B\" must be the bundle name \"A\""));
    EXPECT_THAT(failureWith("\"CFBundleName\" = \"A\"; \"CFBundleIdentifier\" = \"A\";"),
                HasSubstr("the last part"));
}

}  // namespace

}  // namespace zpk_test
