// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/PackageBuilder.h"

#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <filesystem>

#include "Package/CZPKUtil.h"
#include "Platform/ZPKBundle.h"
#include "Tests/Platform/OtherUser.h"
#include "Tests/Tools/zpkpack/PackagerFixture.h"
#include "Tools/zpkpack/ArchiveCheck.h"

namespace fs = std::filesystem;

using ::testing::AllOf;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::StartsWith;

namespace zpk_test {

namespace {

class PackageBuilderTest : public PackagerFixture {
protected:
    /// A build that fails leaves the folder as it was.
    void expectNothingLeft(const std::string& before) const { EXPECT_EQ(listing(), before); }
};

TEST_F(PackageBuilderTest, MakesABundleThatALauncherUnderstands) {
    ASSERT_EQ(build(options()), "");
    const auto bundle = ZPKBundle::bundleWithPath(output());
    ASSERT_TRUE(bundle);
    EXPECT_EQ(bundle->bundleIdentifier(), "com.example.Hello");
    EXPECT_EQ(bundle->localizedName(), "Hello");
    EXPECT_TRUE(bundle->executablePath());
    for (const std::string name : {"Info", "Data"}) {
        const std::string plain = m_folder / (name + ".dat");
        varno_zpk::CZPKUtil::Unfake(output("Contents/Resources/" + name + ".datx"), plain);
        EXPECT_EQ(failureOf([&] { zpk_packager::ArchiveCheck::run(plain, source(name), name); }), "");
        fs::remove(plain);
    }
    fs::remove_all(output());
    EXPECT_THAT(listing(), ::testing::Not(HasSubstr(".zpk-"))) << "the folder of the work is left";
}

TEST_F(PackageBuilderTest, NamesOfAnyLanguageComeBackFromTheDescription) {
    writeFile(source("Package.strings"),
              "\"CFBundleName\" = \"まえ <&>\"; \"CFBundleIdentifier\" = \"com.example.まえ <&>\";");
    ASSERT_EQ(build(options()), "");
    EXPECT_EQ(ZPKBundle::bundleWithPath(output())->localizedName(), "まえ <&>");
}

TEST_F(PackageBuilderTest, KeepsTheTextsOfTheTemplateUnlessThePackageBringsItsOwn) {
    ASSERT_EQ(build(options()), "");
    EXPECT_EQ(readFile(output("Contents/Resources/UILang/Languages.xml")), "template\n");

    const std::string languages = "<Languages FallBackCode=\"en\"><Language Code=\"en\"/></Languages>";
    writeFile(m_folder / "texts/Languages.xml", languages);
    fs::create_directory_symlink(m_folder / "texts", m_folder / "source/UILang");
    zpk_packager::BuildOptions replacing = options();
    replacing.replace = true;
    ASSERT_EQ(build(replacing), "");
    EXPECT_EQ(readFile(output("Contents/Resources/UILang/Languages.xml")), languages);
    EXPECT_FALSE(fs::is_symlink(output("Contents/Resources/UILang")));
}

TEST_F(PackageBuilderTest, ATemplateGivenThroughALinkStaysAsItIs) {
    fs::create_directory_symlink(m_folder / "Template.app", m_folder / "link");
    const std::string description = readFile(templateBundle("Contents/Info.plist"));
    zpk_packager::BuildOptions linked = options();
    linked.templatePath = m_folder / "link";
    ASSERT_EQ(build(linked), "");
    EXPECT_FALSE(fs::is_symlink(m_folder / "Out.app"));
    EXPECT_EQ(readFile(templateBundle("Contents/Info.plist")), description);
    EXPECT_FALSE(fs::exists(templateBundle("Contents/Resources/Data.datx")));
}

TEST_F(PackageBuilderTest, WritesNothingThroughALinkInTheTemplate) {
    fs::rename(templateBundle("Contents/Resources"), m_folder / "resources");
    fs::create_directory_symlink(m_folder / "resources", templateBundle("Contents/Resources"));
    const std::string before = listing();
    EXPECT_THAT(build(options()), EndsWith("/Out.app/Contents/Resources: it is no folder"));
    expectNothingLeft(before);
}

TEST_F(PackageBuilderTest, RefusesATemplateThatIsNoLauncher) {
    fs::remove(templateBundle("Contents/Linux/Zephyrkit"));
    const std::string before = listing();
    EXPECT_EQ(build(options()), templateBundle() + " is no launcher bundle");
    expectNothingLeft(before);
}

TEST_F(PackageBuilderTest, SaysThatTheFolderOfTheOutputIsMissing) {
    zpk_packager::BuildOptions nowhere = options();
    nowhere.outputPath = m_folder / "missing/Out.app";
    EXPECT_EQ(build(nowhere), "cannot make a folder in " + (m_folder / "missing: No such file or directory"));
}

TEST_F(PackageBuilderTest, AWriteProtectedTemplateGivesAWholeBundle) {
    for (const char* const folder : {"Contents/Resources/UILang", "Contents/Resources", "Contents", ""}) {
        fs::permissions(templateBundle(folder), fs::perms(0555));
    }
    fs::permissions(templateBundle("Contents/Info.plist"), fs::perms(0444));
    ASSERT_EQ(buildAsOrdinaryUser(options()), "");
    EXPECT_EQ(ZPKBundle::bundleWithPath(output())->bundleIdentifier(), "com.example.Hello");
    EXPECT_TRUE(fs::exists(output("Contents/Resources/Data.datx")));
}

TEST_F(PackageBuilderTest, NamesThePayloadFileThatMayNotBeRead) {
    writeFile(source("Data/deep/secret"), "");
    fs::permissions(source("Data/deep/secret"), fs::perms(0));
    const std::string before = listing();
    EXPECT_EQ(buildAsOrdinaryUser(options()),
              "cannot pack " + source("Data") + ": Data/deep/secret: Permission denied");
    expectNothingLeft(before);
}

TEST_F(PackageBuilderTest, NamesTheFileOfTheTemplateThatMayNotBeRead) {
    writeFile(templateBundle("Contents/Resources/secret"), "");
    fs::permissions(templateBundle("Contents/Resources/secret"), fs::perms(0));
    const std::string before = listing();
    EXPECT_EQ(buildAsOrdinaryUser(options()), templateBundle("Contents/Resources/secret: Permission denied"));
    expectNothingLeft(before);
}

TEST_F(PackageBuilderTest, NamesTheTextThatCannotBeCopied) {
    writeFile(source("UILang/Languages.xml"),
              "<Languages FallBackCode=\"en\"><Language Code=\"en\"/></Languages>");
    ASSERT_EQ(::mkfifo(source("UILang/pipe").c_str(), 0644), 0);
    const std::string before = listing();
    EXPECT_THAT(build(options()), StartsWith(source("UILang/pipe: ")));
    expectNothingLeft(before);
}

TEST_F(PackageBuilderTest, ReplacesWhatTheTemplateHoldsInThePlaceOfAnArchive) {
    writeFile(templateBundle("Contents/Resources/Data.datx/file"), "");
    ASSERT_EQ(build(options()), "");
    EXPECT_TRUE(fs::is_regular_file(output("Contents/Resources/Data.datx")));
}

TEST_F(PackageBuilderTest, SaysThatTheOutputFolderMayNotBeWritten) {
    fs::create_directory(m_folder / "closed");
    fs::permissions(m_folder / "closed", fs::perms(0555));
    zpk_packager::BuildOptions closed = options();
    closed.outputPath = m_folder / "closed/Out.app";
    EXPECT_EQ(buildAsOrdinaryUser(closed),
              "cannot make a folder in " + (m_folder / "closed: Permission denied"));
}

TEST_F(PackageBuilderTest, AFileThatCannotBeWrittenWholeLeavesNothing) {
    writeFile(source("Data/noise"), noise(400000));
    const std::string before = listing();
    struct rlimit limit {};
    ::getrlimit(RLIMIT_FSIZE, &limit);
    const struct rlimit small { 100000, limit.rlim_max };
    ::setrlimit(RLIMIT_FSIZE, &small);
    const std::string failure = build(options());
    ::setrlimit(RLIMIT_FSIZE, &limit);
    EXPECT_THAT(failure, AllOf(StartsWith("cannot pack " + source("Data")), HasSubstr("Data.dat"),
                               EndsWith("File too large")));
    expectNothingLeft(before);
}

TEST_F(PackageBuilderTest, AnOutputThatExistsIsKeptUnlessItIsToBeReplaced) {
    writeFile(output("old"), "old");
    const std::string before = listing();
    zpk_packager::BuildOptions second = options();
    EXPECT_THAT(build(second), HasSubstr("--force"));
    expectNothingLeft(before);
    second.replace = true;
    EXPECT_EQ(build(second), "");
    EXPECT_FALSE(fs::exists(output("old")));
    EXPECT_THAT(listing(), ::testing::Not(HasSubstr(".zpk-")));
}

TEST_F(PackageBuilderTest, AFailedReplacementKeepsTheOldBundle) {
    writeFile(output("old"), "old");
    fs::permissions(source("Data/setup"), fs::perms(0));
    const std::string before = listing();
    zpk_packager::BuildOptions replacing = options();
    replacing.replace = true;
    EXPECT_THAT(buildAsOrdinaryUser(replacing), HasSubstr("Data/setup: Permission denied"));
    expectNothingLeft(before);
}

}  // namespace

}  // namespace zpk_test
