// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <thread>

#include "Package/CZPKUtil.h"
#include "Platform/ZPKBundle.h"
#include "Platform/ZPKMainBundle.h"
#include "Tests/Platform/ScopedEnvironment.h"
#include "Tests/Support/CapturedStreams.h"
#include "Tests/Support/TemporaryFolder.h"

namespace {

using varno_zpk::CZPKUtil;
using zpk_test::CapturedStreams;
using zpk_test::captureStreams;
using zpk_test::readFile;
using zpk_test::ScopedEnvironment;
using zpk_test::TemporaryFolder;
using zpk_test::writeFile;

/// A main bundle whose archive tool only records how it was started.
class CZPKUtilArchiveToolTest : public ::testing::Test {
protected:
    void SetUp() override {
        writeFile(m_folder / "A.app/Contents/Info.plist", "<plist><dict/></plist>");
        std::filesystem::create_directories(m_folder / "A.app/Contents/Helpers");
        std::filesystem::copy_file(ZPK_PROBE_TOOL, m_tool);
        ZPKMainBundle::setMainBundle(*ZPKBundle::bundleWithPath(m_folder / "A.app"));
    }

    /// What the tool was started with, one argument a line.
    std::string arguments() const {
        std::string report = readFile(m_report);
        std::replace(report.begin(), report.end(), '\0', '\n');
        const std::string opener = "arguments\n";
        EXPECT_TRUE(report.starts_with(opener)) << report;
        return report.substr(opener.size(), report.find("\nfolder ") - opener.size());
    }

    TemporaryFolder m_folder;
    std::string m_tool = m_folder / "A.app/Contents/Helpers/ditto";
    std::string m_report = m_folder / "report";
    ScopedEnvironment m_environment{"ZPK_PROBE_REPORT", m_report};
};

TEST_F(CZPKUtilArchiveToolTest, CompressSpellsTheResourceOptionWithOneDash) {
    const CapturedStreams streams =
        captureStreams([] { CZPKUtil::Compress("/a folder/Data", "/b \"quoted\"/Data.dat"); });
    EXPECT_EQ(arguments(), "-c\n-z\n-rsrc\n--keepParent\n/a folder/Data\n/b \"quoted\"/Data.dat\n");
    EXPECT_EQ(streams.standardOutput, "probe output\n");
    EXPECT_EQ(streams.standardError, "probe error\n");
}

TEST_F(CZPKUtilArchiveToolTest, ExtractSpellsTheResourceOptionWithTwoDashesAndSwallowsErrors) {
    const CapturedStreams streams = captureStreams([] { CZPKUtil::Extract("/s;rm/Data.dat", ""); });
    EXPECT_EQ(arguments(), "-x\n-z\n--rsrc\n/s;rm/Data.dat\n\n");
    EXPECT_EQ(streams.standardOutput, "probe output\n");
    EXPECT_EQ(streams.standardError, "");
    EXPECT_NE(readFile(m_report).find("\nerrors pipe:"), std::string::npos);
}

TEST_F(CZPKUtilArchiveToolTest, BothWaitForTheTool) {
    const ScopedEnvironment slow("ZPK_PROBE_END", "slow");
    for (const auto operation : {&CZPKUtil::Compress, &CZPKUtil::Extract}) {
        std::filesystem::remove(m_report + ".end");
        captureStreams([&] { operation("src", "dst"); });
        EXPECT_TRUE(std::filesystem::exists(m_report + ".end"));
    }
}

TEST_F(CZPKUtilArchiveToolTest, FailingToolIsNotReported) {
    for (const char* const end : {"1", "255", "signal"}) {
        const ScopedEnvironment failing("ZPK_PROBE_END", end);
        const CapturedStreams streams = captureStreams([] { CZPKUtil::Extract("src", "dst"); });
        EXPECT_EQ(streams.standardError, "") << end;
    }
}

TEST_F(CZPKUtilArchiveToolTest, MissingToolIsSilentAndNoOtherIsTaken) {
    std::filesystem::remove(m_tool);
    std::filesystem::create_directory(m_folder / "path");
    std::filesystem::copy_file(ZPK_PROBE_TOOL, m_folder / "path/ditto");
    const ScopedEnvironment path("PATH", m_folder / "path");
    ASSERT_EQ(::chdir((m_folder / "path").c_str()), 0);
    const CapturedStreams streams = captureStreams([] {
        CZPKUtil::Compress("src", "dst");
        CZPKUtil::Extract("src", "dst");
    });
    EXPECT_EQ(streams.standardOutput + streams.standardError, "");
    EXPECT_FALSE(std::filesystem::exists(m_report));
}

TEST_F(CZPKUtilArchiveToolTest, ExtractWorksOnAnotherThreadDespiteInterruptions) {
    const ScopedEnvironment slow("ZPK_PROBE_END", "slow");
    struct sigaction action {};
    action.sa_handler = [](int) {};
    ::sigaction(SIGUSR1, &action, nullptr);
    bool waited = false;
    captureStreams([&] {
        std::thread worker([&] {
            CZPKUtil::Extract("src", "dst");
            waited = std::filesystem::exists(m_report + ".end");
        });
        for (int count = 0; count < 20; ++count) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
            ::pthread_kill(worker.native_handle(), SIGUSR1);
        }
        worker.join();
    });
    EXPECT_TRUE(waited);
}

}  // namespace
