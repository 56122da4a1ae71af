// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Package/ZPKPackageTitle.h"

#include <gtest/gtest.h>

#include "Tests/Support/TemporaryFolder.h"

using zpk_test::writeFile;

namespace {

class ZPKPackageTitleTest : public ::testing::Test {
protected:
    ZPKBundle bundle() const { return ZPKBundle::bundleWithPath(m_folder / "Acme.app").value(); }

    void describe(const std::string& entries) const {
        writeFile(m_folder / "Acme.app/Contents/Info.plist", "<plist><dict>" + entries + "</dict></plist>");
    }

    void nameInLanguage(const std::string& language, const std::string& text) const {
        writeFile(m_folder / ("Acme.app/Contents/Resources/UILang/" + language + "/InfoPlist.strings"), text);
    }

    const zpk_test::TemporaryFolder m_folder;
};

TEST_F(ZPKPackageTitleTest, TheLanguagesOwnNameGoesBeforeThatOfTheDescription) {
    describe("<key>CFBundleDisplayName</key><string>Acme Suite</string>");
    nameInLanguage("ja", "\"CFBundleDisplayName\" = \"\xE3\x82\xA2\xE3\x82\xAF\xE3\x83\x9F\";");
    EXPECT_EQ(ZPKPackageTitle::find(bundle(), "ja"), "\xE3\x82\xA2\xE3\x82\xAF\xE3\x83\x9F");
    EXPECT_EQ(ZPKPackageTitle::find(bundle(), "de"), "Acme Suite");
}

TEST_F(ZPKPackageTitleTest, AnEmptyOrBrokenNameCountsAsNone) {
    describe("<key>CFBundleDisplayName</key><string>Acme Suite</string>");
    nameInLanguage("de", "\"CFBundleDisplayName\" = \"\";");
    nameInLanguage("fr", "\"CFBundleDisplayName\" = ");
    nameInLanguage("nl", "\"CFBundleName\" = \"Other\";");
    for (const char* const language : {"de", "fr", "nl"}) {
        EXPECT_EQ(ZPKPackageTitle::find(bundle(), language), "Acme Suite") << language;
    }
}

TEST_F(ZPKPackageTitleTest, WithoutOneThereIsTheBundlesName) {
    describe("<key>CFBundleName</key><string>AcmeSetup</string>");
    EXPECT_EQ(ZPKPackageTitle::find(bundle(), "en"), std::nullopt);
    EXPECT_EQ(ZPKPackageTitle::inLanguage(bundle(), "en"), "AcmeSetup");
}

}  // namespace
