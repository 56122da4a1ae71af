// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Platform/ZPKMainBundle.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

#include "Platform/ZPKTask.h"
#include "Tests/Support/CapturedStreams.h"
#include "Tests/Support/TemporaryFolder.h"

namespace {

using zpk_test::captureStreams;
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

/// What the program at `path`, a copy of the tool, says of itself.
std::string outputOf(const std::string& path, const std::vector<std::string>& arguments = {}) {
    ZPKTask task;
    task.setLaunchPath(path);
    task.setArguments(arguments);
    return captureStreams([&task] {
               ASSERT_TRUE(task.launch());
               task.waitUntilExit();
           })
        .standardOutput;
}

TEST(ZPKMainBundleTest, IsFoundFromTheProgramsOwnPath) {
    const TemporaryFolder folder;
    const std::string bundle = folder / "My App.app";
    const std::string program = bundle + "/Contents/Linux/Program";
    writeFile(bundle + "/Contents/Info.plist", information(entry("CFBundleName", "Myself")));
    std::filesystem::create_directories(bundle + "/Contents/Linux");
    std::filesystem::copy_file(ZPK_SELF_TOOL, program);
    std::filesystem::create_symlink(program, folder / "link");
    const std::string expected = "program " + program + "\nbundle " + bundle + "\napplication Myself\n";
    ASSERT_EQ(::chdir("/"), 0);
    EXPECT_EQ(outputOf(program), expected);
    EXPECT_EQ(outputOf(folder / "link"), expected);
    ASSERT_EQ(::chdir((bundle + "/Contents").c_str()), 0);
    EXPECT_EQ(outputOf("Linux/Program"), expected);
    EXPECT_EQ(outputOf(program, {"remove"}), expected);
    EXPECT_FALSE(std::filesystem::exists(program));
}

TEST(ZPKMainBundleTest, OfAProgramThatOnlyLooksRemoved) {
    const TemporaryFolder folder;
    const std::string program = folder / "A.app/Contents/Linux/Program (deleted)";
    writeFile(folder / "A.app/Contents/Info.plist", information(""));
    std::filesystem::create_directories(folder / "A.app/Contents/Linux");
    std::filesystem::copy_file(ZPK_SELF_TOOL, program);
    EXPECT_EQ(outputOf(program),
              "program " + program + "\nbundle " + (folder / "A.app") + "\napplication A\n");
}

TEST(ZPKMainBundleTest, OfALoneProgramIsItsFolder) {
    const std::string program = std::filesystem::read_symlink("/proc/self/exe");
    EXPECT_EQ(ZPKMainBundle::mainBundle().bundlePath(), std::filesystem::path(program).parent_path());
    EXPECT_EQ(ZPKMainBundle::mainBundle().bundleIdentifier(), "");
    EXPECT_FALSE(ZPKMainBundle::mainBundle().executablePath());
}

TEST(ZPKMainBundleTest, MayBeSet) {
    const TemporaryFolder folder;
    writeFile(folder / "A.app/Contents/Info.plist", information(""));
    ZPKMainBundle::setMainBundle(*ZPKBundle::bundleWithPath(folder / "A.app"));
    EXPECT_EQ(ZPKMainBundle::mainBundle().helperPath("ditto"), folder / "A.app/Contents/Helpers/ditto");
}

}  // namespace
