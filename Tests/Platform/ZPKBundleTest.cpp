// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Platform/ZPKBundle.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "Tests/Support/TemporaryFolder.h"

namespace {

using zpk_test::TemporaryFolder;
using zpk_test::writeFile;

std::string information(const std::string& entries) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<!DOCTYPE plist PUBLIC \"-//X//DTD PLIST 1.0//EN\" \"http://example.com/PropertyList-1.0.dtd\">\n"
           "<plist version=\"1.0\"><dict>" +
           entries + "</dict></plist>\n";
}

std::string entry(const std::string& key, const std::string& value) {
    return "<key>" + key + "</key><string>" + value + "</string>";
}

void writeProgram(const std::string& path, mode_t mode = 0755) {
    writeFile(path, "#!/bin/sh\n");
    ASSERT_EQ(::chmod(path.c_str(), mode), 0);
}

TEST(ZPKBundleTest, ABundleIsAFolderWithADescription) {
    const TemporaryFolder folder;
    writeFile(folder / "Full.app/Contents/Info.plist", information(""));
    writeFile(folder / "Damaged.app/Contents/Info.plist", "<plist");
    std::filesystem::create_directories(folder / "Empty.app/Contents");
    std::filesystem::create_directories(folder / "Odd.app/Contents/Info.plist");
    std::filesystem::create_directories(folder / "Pipe.app/Contents");
    ASSERT_EQ(::mkfifo((folder / "Pipe.app/Contents/Info.plist").c_str(), 0600), 0);
    std::filesystem::create_directories(folder / "Device.app/Contents");
    std::filesystem::create_symlink("/dev/zero", folder / "Device.app/Contents/Info.plist");
    writeFile(folder / "File.app", "x");
    std::filesystem::create_directory_symlink("Full.app", folder / "Link.app");
    struct Row {
        std::string path;
        bool isBundle;
    };
    const Row rows[] = {{folder / "Full.app", true},
                        {folder / "Full.app///", true},
                        {folder / "Link.app", true},
                        {folder / "Damaged.app", true},
                        {folder / "Empty.app", false},
                        {folder / "Odd.app", false},
                        {folder / "Pipe.app", false},
                        {folder / "Device.app", false},
                        {folder / "File.app", false},
                        {folder / "Missing.app", false},
                        {"", false},
                        {"/", false}};
    for (const Row& row : rows) {
        EXPECT_EQ(ZPKBundle::bundleWithPath(row.path).has_value(), row.isBundle) << row.path;
    }
    const auto bundle = ZPKBundle::bundleWithPath(folder / "Full.app//");
    EXPECT_EQ(bundle->bundlePath(), folder / "Full.app");
    EXPECT_EQ(bundle->resourcePath(), folder / "Full.app/Contents/Resources");
    EXPECT_EQ(bundle->helperPath("ditto"), folder / "Full.app/Contents/Helpers/ditto");
    EXPECT_EQ(bundle->frameworksPath(), folder / "Full.app/Contents/Frameworks");
    EXPECT_EQ(bundle->plugInPath("X.so"), folder / "Full.app/Contents/PlugIns/X.so");
}

TEST(ZPKBundleTest, ExecutableIsAProgramInItsOwnFolder) {
    const TemporaryFolder folder;
    const std::string bundle = folder / "Setup.app";
    writeProgram(bundle + "/Contents/Linux/Setup");
    writeProgram(bundle + "/Contents/Linux/Set up \xE6\x97\xA5");
    writeProgram(bundle + "/Contents/Linux/plain", 0644);
    writeProgram(bundle + "/Contents/Linux/sub/Setup");
    writeProgram(bundle + "/Contents/Setup");
    std::filesystem::create_symlink("Setup", bundle + "/Contents/Linux/link");
    ASSERT_EQ(::mkfifo((bundle + "/Contents/Linux/fifo").c_str(), 0777), 0);
    struct Row {
        std::string name;
        bool isProgram;
    };
    const Row rows[] = {{"Setup", true},      {"Set up \xE6\x97\xA5", true},
                        {"link", true},       {"plain", false},
                        {"missing", false},   {"sub", false},
                        {"sub/Setup", false}, {"../Setup", false},
                        {"..", false},        {".", false},
                        {"", false},          {"fifo", false},
                        {"/bin/true", false}};
    for (const Row& row : rows) {
        writeFile(bundle + "/Contents/Info.plist", information(entry("CFBundleExecutable", row.name)));
        const auto path = ZPKBundle::bundleWithPath(bundle)->executablePath();
        ASSERT_EQ(path.has_value(), row.isProgram) << row.name;
        if (path) {
            EXPECT_EQ(*path, bundle + "/Contents/Linux/" + row.name);
        }
    }
    for (const std::string& information :
         {information(""), information("<key>CFBundleExecutable</key><integer>1</integer>"),
          std::string("damaged")}) {
        writeFile(bundle + "/Contents/Info.plist", information);
        EXPECT_FALSE(ZPKBundle::bundleWithPath(bundle)->executablePath()) << information;
    }
}

TEST(ZPKBundleTest, IdentifierIsEmptyWithoutOne) {
    const TemporaryFolder folder;
    writeFile(folder / "A.app/Contents/Info.plist",
              information(entry("CFBundleIdentifier", "com.varno.Zephyrkit")));
    writeFile(folder / "B.app/Contents/Info.plist", information(""));
    EXPECT_EQ(ZPKBundle::bundleWithPath(folder / "A.app")->bundleIdentifier(), "com.varno.Zephyrkit");
    EXPECT_EQ(ZPKBundle::bundleWithPath(folder / "B.app")->bundleIdentifier(), "");
}

TEST(ZPKBundleTest, LocalizedNameHasThreeSources) {
    const TemporaryFolder folder;
    const std::string bundle = folder / "My Folder.app";
    writeFile(bundle + "/Contents/Info.plist", information(""));
    EXPECT_EQ(ZPKBundle::bundleWithPath(bundle)->localizedName(), "My Folder");
    writeFile(bundle + "/Contents/Info.plist", information(entry("CFBundleName", "Plain &amp; Name")));
    EXPECT_EQ(ZPKBundle::bundleWithPath(bundle)->localizedName(), "Plain & Name");
    writeFile(bundle + "/Contents/Resources/InfoPlist.strings", "Other = \"x\";");
    EXPECT_EQ(ZPKBundle::bundleWithPath(bundle)->localizedName(), "Plain & Name");
    writeFile(bundle + "/Contents/Resources/InfoPlist.strings",
              "CFBundleName = \"\xE5\x90\x8D\xE5\x89\x8D\";");
    EXPECT_EQ(ZPKBundle::bundleWithPath(bundle)->localizedName(), "\xE5\x90\x8D\xE5\x89\x8D");
    writeFile(folder / "Bare/Contents/Info.plist", "damaged");
    EXPECT_EQ(ZPKBundle::bundleWithPath(folder / "Bare")->localizedName(), "Bare");
}

TEST(ZPKBundleTest, DisplayNameIsOfTheDescriptionAlone) {
    const zpk_test::TemporaryFolder folder;
    const std::string description = folder / "Named.app/Contents/Info.plist";
    const auto nameIn = [&](const std::string& entries) {
        zpk_test::writeFile(description, "<plist><dict>" + entries + "</dict></plist>");
        return ZPKBundle::bundleWithPath(folder / "Named.app")->displayName();
    };
    EXPECT_EQ(nameIn("<key>CFBundleName</key><string>Named</string>"), std::nullopt);
    EXPECT_EQ(nameIn("<key>CFBundleDisplayName</key><string></string>"), std::nullopt);
    EXPECT_EQ(nameIn("<key>CFBundleDisplayName</key><string>Acme &amp; Sons/2 \xE2\x84\xA2</string>"),
              "Acme & Sons/2 \xE2\x84\xA2");
}

TEST(ZPKBundleTest, ProgramsBelongToTheInnermostBundle) {
    const TemporaryFolder folder;
    const std::string outer = folder / "Outer.app";
    const std::string inner = outer + "/Contents/Resources/Inner.app";
    writeFile(outer + "/Contents/Info.plist", information(""));
    writeFile(inner + "/Contents/Info.plist", information(""));
    struct Row {
        std::string program;
        std::string bundle;
    };
    const Row rows[] = {{outer + "/Contents/Linux/Outer", outer},
                        {inner + "/Contents/Linux/Inner", inner},
                        {inner + "/Contents/Linux/deeper/Inner", inner},
                        {outer + "/Contents/Resources/tool", outer},
                        {outer + "/Contents/Resources/Other.app/Contents/Linux/Other", outer},
                        {outer + "/Contents/Helpers/ditto", ""},
                        {outer + "/tool", ""},
                        {folder / "Nothing.app/Contents/Linux/tool", ""},
                        {"/Contents/Linux/tool", ""},
                        {"", ""}};
    for (const Row& row : rows) {
        const auto bundle = ZPKBundle::bundleOfProgram(row.program);
        EXPECT_EQ(bundle ? bundle->bundlePath() : "", row.bundle) << row.program;
    }
}

}  // namespace
