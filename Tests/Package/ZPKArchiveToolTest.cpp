// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Package/ZPKArchiveTool.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <thread>

#include "Platform/ZPKHeldFolder.h"
#include "Platform/ZPKMainBundle.h"
#include "Platform/ZPKTask.h"
#include "Tests/Platform/ScopedEnvironment.h"
#include "Tests/Support/CapturedStreams.h"
#include "Tests/Support/TemporaryFolder.h"

namespace fs = std::filesystem;
using zpk_test::readFile;
using zpk_test::TemporaryFolder;
using zpk_test::writeFile;

namespace {

/// A main bundle whose archive tool does what a test wants of it.
class ZPKArchiveToolTest : public ::testing::Test {
protected:
    ZPKArchiveToolTest() {
        writeFile(m_folder / "A.app/Contents/Info.plist", "<plist><dict/></plist>");
        ZPKMainBundle::setMainBundle(*ZPKBundle::bundleWithPath(m_folder / "A.app"));
    }

    void installTool(const std::string& script) {
        writeFile(m_path, "#!/bin/sh\n" + script + "\n");
        fs::permissions(m_path, fs::perms::owner_all);
    }

    TemporaryFolder m_folder;
    const std::string m_path = m_folder / "A.app/Contents/Helpers/ditto";
    ZPKArchiveTool m_tool;
};

TEST_F(ZPKArchiveToolTest, EndOfTheToolIsTold) {
    installTool("exit 0");
    EXPECT_TRUE(m_tool.pack("a", "b"));
    EXPECT_TRUE(m_tool.unpack("a", "b"));
    installTool("exit 3");
    const ZPKOutcome failed = m_tool.pack("a", "b");
    ASSERT_FALSE(failed);
    EXPECT_EQ(failed.failure().message(), m_path + ": Ended with status 3");
    installTool("kill -9 $$");
    const ZPKOutcome killed = m_tool.unpack("a", "b");
    ASSERT_FALSE(killed);
    EXPECT_EQ(killed.failure().reason(), "Ended by signal 9 (Killed)");
    // A status that a shell gives for a signal.
    installTool("exit 137");
    EXPECT_EQ(m_tool.unpack("a", "b").failure().reason(), "Ended with status 137");
}

TEST_F(ZPKArchiveToolTest, ToolIsToldToEndWithItsParent) {
    const std::string named = m_folder / "named";
    installTool(std::string("echo \"$") + ZPKTask::kParentVariable + "\" > '" + named + "'");
    for (const auto& run : {&ZPKArchiveTool::pack, &ZPKArchiveTool::unpack}) {
        fs::remove(named);
        EXPECT_TRUE((m_tool.*run)("a", "b"));
        EXPECT_EQ(readFile(named), std::to_string(::getpid()) + "\n");
    }
}

TEST_F(ZPKArchiveToolTest, MissingToolIsTold) {
    const ZPKOutcome outcome = m_tool.unpack("a", "b");
    ASSERT_FALSE(outcome);
    EXPECT_EQ(outcome.failure().message(), m_path + ": No such file or directory");
}

TEST_F(ZPKArchiveToolTest, ToolWithoutItsInterpreterIsTold) {
    writeFile(m_path, "#!/no/such/interpreter\n");
    fs::permissions(m_path, fs::perms::owner_all);
    EXPECT_EQ(m_tool.unpack("a", "b").failure().message(),
              m_path + ": Its interpreter /no/such/interpreter is missing");
}

TEST_F(ZPKArchiveToolTest, NothingIsUnpackedIntoWhatStandsInAHeldFoldersPlace) {
    const std::string folder = m_folder / "held";
    fs::create_directory(folder);
    const ZPKHeldFolder held(folder, ZPKFileDescriptor(::open(folder.c_str(), O_PATH | O_DIRECTORY)));
    installTool(": > \"$5/made\"");
    EXPECT_TRUE(m_tool.unpack(folder + "/a", folder));
    EXPECT_TRUE(fs::exists(folder + "/made"));
    fs::rename(folder, m_folder / "moved");
    fs::create_directory(folder);
    const ZPKOutcome outcome = m_tool.unpack(folder + "/a", folder);
    ASSERT_FALSE(outcome);
    EXPECT_EQ(outcome.failure().message(), folder + ": Is no longer in its place");
    EXPECT_TRUE(fs::is_empty(folder));
}

TEST_F(ZPKArchiveToolTest, TerminatedToolEndsAndNoneIsStartedAfterwards) {
    const std::string marker = m_folder / "runs";
    installTool(": > '" + marker + "'; exec sleep 600");
    std::thread other([&] {
        while (!fs::exists(marker)) {
            std::this_thread::yield();
        }
        m_tool.terminate();
    });
    const ZPKOutcome ended = m_tool.unpack("a", "b");
    other.join();
    ASSERT_FALSE(ended);
    EXPECT_EQ(ended.failure().reason(), "Ended by signal 9 (Killed)");
    fs::remove(marker);
    EXPECT_FALSE(m_tool.unpack("a", "b"));
    EXPECT_FALSE(fs::exists(marker));
}

}  // namespace
