// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/CarriedWindows.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <filesystem>

#include "Tests/Platform/MachineProgram.h"
#include "Tests/Tools/zpkpack/PackagerFixture.h"
#include "Tools/zpkpack/PackageBuilder.h"
#include "Tools/zpkpack/PackageSummary.h"

namespace fs = std::filesystem;

using ::testing::AllOf;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::StartsWith;
using zpk_packager::PackageSummary;

namespace zpk_test {

namespace {

/// What a loader takes for a library, and one that tells itself from others.
std::string library(const std::string& mark) {
    return MachineProgram().bytes64() + mark;
}

/// A template with windows, and a vendor's set of parts.
class CarriedWindowsTest : public PackagerFixture {
protected:
    CarriedWindowsTest() {
        writeParts(templateBundle("Contents/Frameworks"));
        writeFile(templateBundle("Contents/PlugIns/ZPKDesktop.so"), "module");
        writeFile(templateBundle("Contents/Resources/MainMenu.ui"), "form");
        writeFile(templateBundle("Contents/Resources/Licenses/libplist"), "text");
        writeFile(templateBundle("Contents/Resources/Licenses/Windows/libqt6core6"), "text");
        writeParts(set());
        writeFile(set("libQt6Core.so.6"), library("mended"));
    }

    std::string set(const std::string& relative = "") const { return m_folder / ("set/" + relative); }

    static void writeParts(const std::string& folder) {
        for (const char* const program : {"/ld-linux-x86-64.so.2", "/Zephyrkit-desktop"}) {
            writeFile(folder + program, library("program"));
            fs::permissions(folder + program, fs::perms(0755));
        }
        writeFile(folder + "/libQt6Core.so.6", library("library"));
        writeFile(folder + "/fonts/Font.ttf", "font");
        writeFile(folder + "/Parts", "fonts/Font.ttf\nlibQt6Core.so.6\n");
    }

    zpk_packager::BuildOptions withSet() const {
        zpk_packager::BuildOptions options = this->options();
        options.frameworksPath = set();
        return options;
    }

    zpk_packager::BuildOptions withoutWindows() const {
        zpk_packager::BuildOptions options = this->options();
        options.withWindows = false;
        return options;
    }
};

TEST_F(CarriedWindowsTest, APackageCarriesWhatTheTemplateDoes) {
    ASSERT_EQ(build(options()), "");
    EXPECT_EQ(readFile(output("Contents/Frameworks/libQt6Core.so.6")), library("library"));
    EXPECT_EQ(readFile(output("Contents/PlugIns/ZPKDesktop.so")), "module");
    EXPECT_TRUE(fs::exists(output("Contents/Resources/MainMenu.ui")));
    EXPECT_TRUE(fs::exists(output("Contents/Resources/Licenses/Windows/libqt6core6")));
    const PackageSummary summary = PackageSummary::ofBundle(output());
    EXPECT_THAT(summary.text(), StartsWith("windows: 2 libraries carried, " +
                                           std::to_string(3 * library("program").size() + 4 + 31) +
                                           " bytes\nbundle: 16 files, "));
}

TEST_F(CarriedWindowsTest, WithoutWindowsNothingOfThemComesAlong) {
    const PackageSummary summary = zpk_packager::PackageBuilder(withoutWindows()).build();
    EXPECT_THAT(summary.text(), StartsWith("windows: none, it runs on the terminal\nbundle: 8 files, "));
    for (const char* const item : {"Contents/Frameworks", "Contents/PlugIns",
                                   "Contents/Resources/MainMenu.ui", "Contents/Resources/Licenses/Windows"}) {
        EXPECT_FALSE(fs::exists(output(item))) << item;
    }
    for (const char* const item : {"Contents/Linux/Zephyrkit", "Contents/Resources/UILang/Languages.xml",
                                   "Contents/Resources/Licenses/libplist", "Contents/Resources/Data.datx"}) {
        EXPECT_TRUE(fs::exists(output(item))) << item;
    }
}

TEST_F(CarriedWindowsTest, WithoutWindowsTheirPartsNeedNotBeWhole) {
    fs::remove(templateBundle("Contents/Frameworks/Parts"));
    EXPECT_EQ(build(withoutWindows()), "");
}

TEST_F(CarriedWindowsTest, AnotherSetTakesTheirPlace) {
    writeFile(set("libNew.so.1"), "new");
    fs::rename(templateBundle("Contents/Frameworks/fonts/Font.ttf"),
               templateBundle("Contents/Frameworks/fonts/Old.ttf"));
    ASSERT_EQ(build(withSet()), "");
    EXPECT_EQ(readFile(output("Contents/Frameworks/libQt6Core.so.6")), library("mended"));
    EXPECT_TRUE(fs::exists(output("Contents/Frameworks/libNew.so.1")));
    EXPECT_FALSE(fs::exists(output("Contents/Frameworks/fonts/Old.ttf")));
    EXPECT_TRUE(fs::exists(output("Contents/PlugIns/ZPKDesktop.so")));
    EXPECT_TRUE(fs::exists(output("Contents/Resources/Licenses/Windows/libqt6core6")));
}

TEST_F(CarriedWindowsTest, ASetGivenThroughALinkIsCopied) {
    fs::rename(set(), m_folder / "elsewhere");
    fs::create_directory_symlink(m_folder / "elsewhere", m_folder / "set");
    ASSERT_EQ(build(withSet()), "");
    EXPECT_FALSE(fs::is_symlink(output("Contents/Frameworks")));
    EXPECT_EQ(readFile(output("Contents/Frameworks/libQt6Core.so.6")), library("mended"));
}

TEST_F(CarriedWindowsTest, ASetMayBringItsLicences) {
    writeFile(set("Licenses/libqt6core7"), "text");
    ASSERT_EQ(build(withSet()), "");
    EXPECT_FALSE(fs::exists(output("Contents/Frameworks/Licenses")));
    EXPECT_TRUE(fs::exists(output("Contents/Resources/Licenses/Windows/libqt6core7")));
    EXPECT_FALSE(fs::exists(output("Contents/Resources/Licenses/Windows/libqt6core6")));
    EXPECT_TRUE(fs::exists(output("Contents/Resources/Licenses/libplist")));
}

TEST_F(CarriedWindowsTest, ASetThatIsNotWholeIsRefused) {
    for (const std::string part :
         {"ld-linux-x86-64.so.2", "Zephyrkit-desktop", "Parts", "libQt6Core.so.6", "fonts/Font.ttf"}) {
        writeParts(set());
        fs::remove(set(part));
        const std::string before = listing();
        EXPECT_EQ(build(withSet()), set(part + ": No such file or directory"));
        EXPECT_EQ(listing(), before);
    }
    writeParts(set());
    writeFile(set("libQt6Core.so.6"), "");
    EXPECT_EQ(build(withSet()), set("libQt6Core.so.6: no library or program for this processor"));
}

TEST_F(CarriedWindowsTest, ATemplateWhosePartsAreNotWholeIsRefused) {
    fs::remove(templateBundle("Contents/Frameworks/libQt6Core.so.6"));
    EXPECT_EQ(build(options()),
              templateBundle("Contents/Frameworks/libQt6Core.so.6: No such file or directory"));
    EXPECT_EQ(build(withSet()), "") << "they are not the ones that are carried";
}

TEST_F(CarriedWindowsTest, APartThatLeadsElsewhereIsRefused) {
    writeFile(m_folder / "libOther.so.6", library("the machine's"));
    fs::remove(set("libQt6Core.so.6"));
    fs::create_symlink(m_folder / "libOther.so.6", set("libQt6Core.so.6"));
    EXPECT_EQ(build(withSet()), set("libQt6Core.so.6: leads out of " + m_folder.path() + "/set"));
    fs::remove(set("libQt6Core.so.6"));
    writeFile(set("Parts"), "../libOther.so.6\n");
    EXPECT_EQ(build(withSet()), set("../libOther.so.6: leads out of " + m_folder.path() + "/set"));
    writeFile(set("Parts"), "libQt6Core.so.6\n");
    writeFile(set("libQt6Core.so.6.4"), library("library"));
    fs::create_symlink("libQt6Core.so.6.4", set("libQt6Core.so.6"));
    EXPECT_EQ(build(withSet()), "") << "a link within the set is none";
}

TEST_F(CarriedWindowsTest, WhatCannotBeCopiedIsNamed) {
    ASSERT_EQ(::mkfifo(set("pipe").c_str(), 0600), 0);
    std::string before = listing();
    EXPECT_THAT(build(withSet()), StartsWith(set("pipe: ")));
    EXPECT_EQ(listing(), before);
    fs::remove(set("pipe"));
    fs::permissions(set("libQt6Core.so.6"), fs::perms(0));
    before = listing();
    EXPECT_EQ(buildAsOrdinaryUser(withSet()), set("libQt6Core.so.6: Permission denied"));
    EXPECT_EQ(listing(), before);
}

TEST_F(CarriedWindowsTest, ALinkInThePlaceOfAFolderOfTheTemplateIsRefused) {
    fs::rename(templateBundle("Contents"), m_folder / "contents");
    fs::create_directory_symlink(m_folder / "contents", templateBundle("Contents"));
    for (const auto& options : {withSet(), withoutWindows()}) {
        const std::string before = listing();
        EXPECT_THAT(build(options), EndsWith("/Out.app/Contents: it is no folder"));
        EXPECT_EQ(listing(), before);
    }
}

TEST_F(CarriedWindowsTest, TheOutputNeverMeetsTheSet) {
    zpk_packager::BuildOptions meeting = withSet();
    meeting.outputPath = set("Out.app");
    EXPECT_THAT(build(meeting), AllOf(HasSubstr("lies in"), HasSubstr("of which the bundle is made")));
    meeting = withSet();
    meeting.outputPath = m_folder / "Holder.app";
    meeting.frameworksPath = m_folder / "Holder.app/Frameworks";
    meeting.replace = true;
    writeParts(*meeting.frameworksPath);
    EXPECT_THAT(build(meeting), HasSubstr("is or holds"));
}

}  // namespace

}  // namespace zpk_test
