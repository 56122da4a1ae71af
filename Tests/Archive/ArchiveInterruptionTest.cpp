// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include <unistd.h>

#include <filesystem>

#include "Tests/Archive/ArchiveFixture.h"

namespace {

namespace fs = std::filesystem;
using namespace zpk_test;

/// Runs the archive tool with the first, second, and so on call of one kind interrupted in each of its
/// threads.
class ArchiveInterruptionTest : public ::testing::TestWithParam<const char*> {
protected:
    void SetUp() override {
#ifdef __SANITIZE_ADDRESS__
        GTEST_SKIP() << "the sanitizer's own calls would be interrupted, and it does not repeat them";
#endif
        writeFile(m_folder / "D/sub/file", std::string(300000, 'x'));
        writeFile(m_folder / "D/hole", "x" + std::string(1000000, '\0'));
        fs::create_symlink("file", m_folder / "D/sub/link");
        fs::create_hard_link(m_folder / "D/hole", m_folder / "D/sub/again");
        fs::create_directory(m_folder / "D/shut");
        chmod((m_folder / "D/shut").c_str(), 0555);
        chmod((m_folder / "D/sub").c_str(), 0555);
        const std::string probe = "strace -f -o /dev/null -e trace=none true 2>/dev/null";
        if (!hasProgram("strace") || std::system(probe.c_str()) != 0) {
            GTEST_SKIP() << "strace is not installed, or processes cannot be traced here";
        }
    }

    Outcome runInterrupted(const std::vector<std::string>& command, int when) {
        std::vector<std::string> line = {
            "strace", "-f",
            "-o",     m_folder / "trace",
            "-e",     std::string("trace=") + GetParam(),
            "-e",     std::string("inject=") + GetParam() + ":error=EINTR:when=" + std::to_string(when)};
        line.insert(line.end(), command.begin(), command.end());
        const Outcome outcome = runProgram(line);
        m_wasInterrupted =
            m_wasInterrupted || readFile(m_folder / "trace").find("INJECTED") != std::string::npos;
        return outcome;
    }

    const TemporaryFolder m_folder;
    bool m_wasInterrupted = false;
};

TEST_P(ArchiveInterruptionTest, IsRepeated) {
    const std::string archive = m_folder / "archive";
    const std::string out = m_folder / "out";
    for (int when = 1; when <= 8; ++when) {
        SCOPED_TRACE(when);
        // What is there is replaced from the second time on.
        const Outcome packed =
            runInterrupted({ZPK_DITTO, "-c", "-z", "-rsrc", "--keepParent", m_folder / "D", archive}, when);
        EXPECT_EQ(packed.exitStatus, 0);
        const Outcome unpacked = runInterrupted({ZPK_DITTO, "-x", "-z", "--rsrc", archive, out}, when);
        EXPECT_EQ(unpacked.exitStatus, 0);
        EXPECT_EQ(packed.standardError + unpacked.standardError, "");
        EXPECT_EQ(snapshot(out + "/D"), snapshot(m_folder / "D"));
    }
    EXPECT_TRUE(m_wasInterrupted) << "no such call was made";
}

INSTANTIATE_TEST_SUITE_P(Calls, ArchiveInterruptionTest,
                         ::testing::Values("openat", "close", "read", "write", "pwrite64", "newfstatat",
                                           "mkdirat", "unlinkat", "linkat", "symlinkat", "readlinkat",
                                           "fchmod", "chmod", "utimensat", "ftruncate", "fsync", "rename",
                                           "flistxattr", "fcntl", "getdents64"),
                         [](const auto& row) { return std::string(row.param); });

}  // namespace
