// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Platform/ZPKLaunchFailure.h"

#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "Platform/ZPKTask.h"
#include "Tests/Platform/MachineProgram.h"
#include "Tests/Platform/OtherUser.h"
#include "Tests/Support/TemporaryFolder.h"

namespace fs = std::filesystem;
using zpk_test::MachineProgram;
using zpk_test::writeFile;

namespace {

std::string reasonOf(const std::string& path) {
    ZPKTask task;
    task.setLaunchPath(path);
    const ZPKOutcome outcome = task.launch();
    task.waitUntilExit();
    return outcome ? "started" : outcome.failure().reason();
}

/// Each program is given to the kernel, whose answer is explained.
class ZPKLaunchFailureTest : public ::testing::Test {
protected:
    std::string addProgram(const std::string& name, std::string_view contents, mode_t mode = 0755) const {
        writeFile(m_folder / name, contents);
        ::chmod((m_folder / name).c_str(), mode);
        return m_folder / name;
    }

    std::string reason(std::string_view contents, mode_t mode = 0755) const {
        return reasonOf(addProgram("program", contents, mode));
    }

    zpk_test::TemporaryFolder m_folder;
};

TEST_F(ZPKLaunchFailureTest, ScriptWithoutItsInterpreter) {
    EXPECT_EQ(reason("#!/no/such/interpreter\n"), "Its interpreter /no/such/interpreter is missing");
    EXPECT_EQ(reason("#!/bin/sh\r\nexit 0\r\n"), "Its interpreter /bin/sh\r is missing");
    EXPECT_EQ(ZPKLaunchFailure::explain(m_folder / "program", ENOENT).message(),
              (m_folder / "program") + ": Its interpreter /bin/sh\\x0d is missing");
    EXPECT_EQ(reason("#!/dev/null/sh\n"), "Its interpreter /dev/null/sh: Not a directory");
    const std::string loop = m_folder / "loop";
    fs::create_symlink("loop", loop);
    EXPECT_EQ(reason("#!" + loop + "\n"), "Its interpreter " + loop + ": Too many levels of symbolic links");
}

TEST_F(ZPKLaunchFailureTest, ScriptWithAnInterpreterThatCannotRun) {
    const std::string plain = addProgram("plain", "#!/bin/sh\n", 0644);
    EXPECT_EQ(reason("#!" + plain + "\n"), "Its interpreter " + plain + ": Not executable");
    EXPECT_EQ(reason("#!" + m_folder.path() + "\n"),
              "Its interpreter " + m_folder.path() + ": Is a directory");
    const std::string text = addProgram("text", "no program");
    EXPECT_EQ(reason("#!" + text + "\n"),
              "Its interpreter " + text + ": Neither a program nor a script that names its interpreter");
    const std::string deeper = addProgram("deeper", "#!/no/such/interpreter\n");
    EXPECT_EQ(reason("#!" + deeper + "\n"),
              "Its interpreter " + deeper + ": Its interpreter /no/such/interpreter is missing");
}

TEST_F(ZPKLaunchFailureTest, ScriptThatInterpretsItself) {
    EXPECT_EQ(reason("#!" + (m_folder / "program") + "\n"), "Too many levels of symbolic links");
    // Also where the file has become that only now.
    EXPECT_EQ(ZPKLaunchFailure::explain(m_folder / "program", ENOEXEC).reason(), "Exec format error");
}

TEST_F(ZPKLaunchFailureTest, ScriptThatNamesNoInterpreter) {
    EXPECT_EQ(reason("#!\n"), "Its first line names no interpreter");
    EXPECT_EQ(reason("#!/" + std::string(5000, 'x') + "\n"), "Its first line names no interpreter");
}

TEST_F(ZPKLaunchFailureTest, ProgramWithoutItsLoader) {
    EXPECT_EQ(reason(MachineProgram{EM_X86_64, "/no/such/loader.so.2"}.bytes64()),
              "Its loader /no/such/loader.so.2 is missing");
    const std::string plain = addProgram("plain", "", 0644);
    EXPECT_EQ(reason(MachineProgram{EM_X86_64, plain}.bytes64()), "Its loader " + plain + ": Not executable");
}

TEST_F(ZPKLaunchFailureTest, LoaderForAnotherProcessor) {
    const std::string loader = addProgram("ld.so", MachineProgram{EM_AARCH64, ""}.bytes64());
    writeFile(m_folder / "program", MachineProgram{EM_X86_64, loader}.bytes64());
    EXPECT_EQ(ZPKLaunchFailure::explain(m_folder / "program", ELIBBAD).reason(),
              "Its loader " + loader + ": Made for another processor: AArch64");
}

TEST_F(ZPKLaunchFailureTest, ProgramForAnotherProcessor) {
    // Explained alone: a machine may have an emulator for it.
    writeFile(m_folder / "program", MachineProgram{EM_AARCH64, "/lib/ld-linux-aarch64.so.1"}.bytes64());
    EXPECT_EQ(ZPKLaunchFailure::explain(m_folder / "program", ENOEXEC).reason(),
              "Made for another processor: AArch64");
    EXPECT_EQ(reason(MachineProgram{0x9080, ""}.bytes64()), "Made for another processor: number 36992");
}

TEST_F(ZPKLaunchFailureTest, FileThatIsNoProgram) {
    EXPECT_EQ(reason(""), "The file is empty");
    // A shell would run it; no shell is asked.
    EXPECT_EQ(reason("exit 0\n"), "Neither a program nor a script that names its interpreter");
    EXPECT_EQ(reason("#!/bin/sh\n", 0644), "Not executable");
    EXPECT_EQ(reason(MachineProgram().bytes64().substr(0, 64)), "Exec format error");
}

TEST_F(ZPKLaunchFailureTest, ItemThatIsNoFile) {
    EXPECT_EQ(reasonOf(m_folder.path()), "Is a directory");
    EXPECT_EQ(reasonOf(m_folder / "none"), "No such file or directory");
    EXPECT_EQ(reasonOf("/dev/null/none"), "Not a directory");
    fs::create_symlink("loop", m_folder / "loop");
    EXPECT_EQ(reasonOf(m_folder / "loop"), "Too many levels of symbolic links");
    ASSERT_EQ(::mkfifo((m_folder / "fifo").c_str(), 0700), 0);
    EXPECT_EQ(reasonOf(m_folder / "fifo"), "Not a regular file");
}

TEST_F(ZPKLaunchFailureTest, FileSystemWithoutExecution) {
    const std::string mounted = m_folder / "mounted";
    fs::create_directory(mounted);
    if (::mount("none", mounted.c_str(), "tmpfs", MS_NOEXEC, nullptr) != 0) {
        GTEST_SKIP() << "takes the right to mount";
    }
    const std::string program = addProgram("mounted/program", "#!/bin/sh\n");
    EXPECT_EQ(reasonOf(program), "On a file system that is mounted noexec");
    EXPECT_EQ(reason("#!" + program + "\n"),
              "Its interpreter " + program + ": On a file system that is mounted noexec");
    ::umount(mounted.c_str());
}

TEST_F(ZPKLaunchFailureTest, WhatMayNotBeLookedAtIsTheSystemsWord) {
    const std::string folder = m_folder / "closed";
    addProgram("closed/program", "#!/bin/sh\n");
    ::chmod(folder.c_str(), 0);
    ::chmod(m_folder.path().c_str(), 0755);
    EXPECT_TRUE(zpk_test::answerWithoutPrivileges(
        [&] { return reasonOf(folder + "/program") == "Permission denied"; }));
    ::chmod(folder.c_str(), 0755);
}

TEST_F(ZPKLaunchFailureTest, ScriptThatMayBeRunAndNotReadIsTheSystemsWord) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "takes another user's file";
    }
    ::chmod(m_folder.path().c_str(), 0755);
    const std::string program = addProgram("program", "#!/no/such/interpreter\n", 0711);
    EXPECT_TRUE(
        zpk_test::answerWithoutPrivileges([&] { return reasonOf(program) == "No such file or directory"; }));
}

TEST_F(ZPKLaunchFailureTest, ErrorsThatAreNotTheProgramsAreTheSystemsWord) {
    addProgram("program", "#!/no/such/interpreter\n");
    for (const int error : {ENOMEM, EAGAIN, ECANCELED, E2BIG, EMFILE}) {
        EXPECT_EQ(ZPKLaunchFailure::explain(m_folder / "program", error).reason(),
                  ZPKFailure::systemReason(error));
    }
    EXPECT_EQ(ZPKLaunchFailure::explain("/bin/true", ENOENT).reason(), "No such file or directory");
}

}  // namespace
