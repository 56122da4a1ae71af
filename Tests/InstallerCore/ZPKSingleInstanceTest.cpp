// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "InstallerCore/ZPKSingleInstance.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>

#include "Tests/InstallerCore/ZPKCoreFixture.h"

namespace fs = std::filesystem;
using zpk_test::TestBundle;
using zpk_test::writeFile;

namespace {

class ZPKSingleInstanceTest : public zpk_test::ZPKCoreFixture {};

/// A process whose executable lies in a bundle of that name, alive as long as this object.
class RunningCopy {
public:
    RunningCopy(const std::string& bundle, const std::string& name, const std::string& strings = "") {
        writeFile(bundle + "/Contents/Info.plist",
                  "<plist><dict><key>CFBundleName</key><string>" + name + "</string></dict></plist>");
        if (!strings.empty()) {
            writeFile(bundle + "/Contents/Resources/InfoPlist.strings",
                      "\"CFBundleName\" = \"" + strings + "\";");
        }
        const std::string program = bundle + "/Contents/Linux/Program";
        fs::create_directories(bundle + "/Contents/Linux");
        fs::copy_file("/bin/sleep", program);
        m_child = fork();
        if (m_child == 0) {
            execl(program.c_str(), program.c_str(), "60", nullptr);
            _exit(127);
        }
        while (fs::read_symlink("/proc/" + std::to_string(m_child) + "/exe").filename() != "Program") {
            usleep(1000);
        }
    }
    ~RunningCopy() {
        kill(m_child, SIGKILL);
        waitpid(m_child, nullptr, 0);
    }
    RunningCopy(const RunningCopy&) = delete;
    RunningCopy& operator=(const RunningCopy&) = delete;

private:
    pid_t m_child = -1;
};

TEST_F(ZPKSingleInstanceTest, AloneRuns) {
    EXPECT_FALSE(ZPKSingleInstance::isOtherRunning());
}

TEST_F(ZPKSingleInstanceTest, SecondCopyEndsInSilenceBeforeStaging) {
    const RunningCopy other(m_folder / "Other.app", TestBundle::name());
    writeFile(m_staging + "/of the other", "");
    pack();
    m_frontEnd.run(m_core);
    EXPECT_EQ(m_frontEnd.log().back(), "terminate");
    EXPECT_EQ(logged({"activate", "alert", "progress"}), Lines{});
    EXPECT_TRUE(fs::exists(m_staging + "/of the other"));
}

TEST_F(ZPKSingleInstanceTest, OtherNamesMayRun) {
    const RunningCopy longer(m_folder / "A.app", TestBundle::name() + "2");
    const RunningCopy capitals(m_folder / "B.app", "t" + TestBundle::name().substr(1));
    EXPECT_FALSE(ZPKSingleInstance::isOtherRunning());
}

TEST_F(ZPKSingleInstanceTest, LocalizedNameOfTheOtherCounts) {
    const RunningCopy other(m_folder / "Other.app", "Whatever", TestBundle::name());
    EXPECT_TRUE(ZPKSingleInstance::isOtherRunning());
}

TEST_F(ZPKSingleInstanceTest, TopLevelStringsFileNamesThisOne) {
    writeFile(m_bundle.resource("InfoPlist.strings"),
              "CFBundleName = \"Einrichtung für Grün" + std::to_string(getpid()) + "\";");
    const RunningCopy identifier(m_folder / "A.app", TestBundle::name());
    EXPECT_FALSE(ZPKSingleInstance::isOtherRunning());
    const RunningCopy same(m_folder / "B.app", "Einrichtung für Grün" + std::to_string(getpid()));
    EXPECT_TRUE(ZPKSingleInstance::isOtherRunning());
}

TEST_F(ZPKSingleInstanceTest, StringsFileWithoutNameFallsBackToTheIdentifier) {
    writeFile(m_bundle.resource("InfoPlist.strings"), "Other = \"x\";");
    const RunningCopy other(m_folder / "A.app", TestBundle::name());
    EXPECT_TRUE(ZPKSingleInstance::isOtherRunning());
}

TEST_F(ZPKSingleInstanceTest, IdentifierWithoutADotNamesNothing) {
    writeFile(m_bundle.path() + "/Contents/Info.plist", "<plist><dict><key>CFBundleIdentifier</key><string>" +
                                                            TestBundle::name() + "</string></dict></plist>");
    const RunningCopy other(m_folder / "A.app", TestBundle::name());
    EXPECT_FALSE(ZPKSingleInstance::isOtherRunning());
}

}  // namespace
