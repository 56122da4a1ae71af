// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Platform/ZPKRunningApplications.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <optional>
#include <thread>

#include "Tests/Platform/OtherUser.h"
#include "Tests/Support/TemporaryFolder.h"

namespace {

using zpk_test::TemporaryFolder;
using zpk_test::writeFile;

/// A process that runs until the end of the test.
class RunningProgram {
public:
    explicit RunningProgram(const std::string& path) {
        char sleep[] = "sleep";
        char time[] = "60";
        char* const arguments[] = {sleep, time, nullptr};
        EXPECT_EQ(::posix_spawn(&m_process, path.c_str(), nullptr, nullptr, arguments, environ), 0) << path;
    }
    ~RunningProgram() {
        ::kill(m_process, SIGKILL);
        ::waitpid(m_process, nullptr, 0);
    }
    RunningProgram(const RunningProgram&) = delete;
    RunningProgram& operator=(const RunningProgram&) = delete;

    pid_t process() const { return m_process; }

private:
    pid_t m_process = -1;
};

std::optional<std::string> nameOf(pid_t process) {
    for (const ZPKRunningApplication& application : ZPKRunningApplications::current()) {
        if (application.processIdentifier == process) {
            return application.localizedName;
        }
    }
    return std::nullopt;
}

std::string makeApplication(const std::string& bundle, const std::string& name, const std::string& program) {
    writeFile(bundle + "/Contents/Info.plist",
              "<plist><dict><key>CFBundleName</key><string>" + name + "</string></dict></plist>");
    const std::string path = bundle + "/Contents/" + program;
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::filesystem::copy_file("/bin/sleep", path);
    return path;
}

TEST(ZPKRunningApplicationsTest, AreTheProcessesOfBundles) {
    const TemporaryFolder folder;
    const RunningProgram plain(makeApplication(folder / "My App.app", "N\xC3\xA4me", "Linux/program"));
    const RunningProgram again(folder / "My App.app/Contents/Linux/program");
    const RunningProgram other(makeApplication(folder / "Other.app", "Other", "Linux/deep/program"));
    const RunningProgram helper(makeApplication(folder / "Helper.app", "Helper", "Helpers/program"));
    const RunningProgram outside("/bin/sleep");
    EXPECT_EQ(nameOf(plain.process()), "N\xC3\xA4me");
    EXPECT_EQ(nameOf(again.process()), "N\xC3\xA4me");
    EXPECT_EQ(nameOf(other.process()), "Other");
    EXPECT_EQ(nameOf(helper.process()), std::nullopt);
    EXPECT_EQ(nameOf(outside.process()), std::nullopt);
}

TEST(ZPKRunningApplicationsTest, OtherUsersProcessesDoNotCount) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "takes root to be two users";
    }
    const TemporaryFolder folder;
    const std::string program = makeApplication(folder / "A.app", "A", "Linux/program");
    zpk_test::giveToUserWithoutPrivileges(folder.path());
    const RunningProgram mine(program);
    EXPECT_EQ(nameOf(mine.process()), "A");
    EXPECT_TRUE(zpk_test::answerWithoutPrivileges([&] {
        const RunningProgram theirs(program);
        return nameOf(theirs.process()) == "A" && !nameOf(mine.process());
    }));
}

TEST(ZPKRunningApplicationsTest, OtherUsersProcessesDoNotCountForRoot) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "takes root to be two users";
    }
    const TemporaryFolder folder;
    const std::string program = makeApplication(folder / "A.app", "A", "Linux/program");
    zpk_test::giveToUserWithoutPrivileges(folder.path());
    const pid_t theirs = ::fork();
    if (theirs == 0) {
        zpk_test::becomeUserWithoutPrivileges();
        ::execl(program.c_str(), program.c_str(), "60", nullptr);
        ::_exit(127);
    }
    const std::string link = "/proc/" + std::to_string(theirs) + "/exe";
    while (std::filesystem::read_symlink(link) != program) {
        std::this_thread::yield();
    }
    EXPECT_EQ(nameOf(theirs), std::nullopt);
    ::kill(theirs, SIGKILL);
    ::waitpid(theirs, nullptr, 0);
}

TEST(ZPKRunningApplicationsTest, ComeByAscendingProcess) {
    const TemporaryFolder folder;
    const std::string program = makeApplication(folder / "A.app", "A", "Linux/program");
    const RunningProgram first(program);
    const RunningProgram second(program);
    const auto applications = ZPKRunningApplications::current();
    EXPECT_GE(applications.size(), 2u);
    EXPECT_TRUE(std::is_sorted(
        applications.begin(), applications.end(),
        [](const auto& one, const auto& other) { return one.processIdentifier < other.processIdentifier; }));
}

TEST(ZPKRunningApplicationsTest, OneWhoseProgramIsGoneStillCounts) {
    const TemporaryFolder folder;
    const std::string program = makeApplication(folder / "A.app", "A", "Linux/program");
    const RunningProgram running(program);
    std::filesystem::remove(program);
    EXPECT_EQ(nameOf(running.process()), "A");
    std::filesystem::remove_all(folder / "A.app");
    EXPECT_EQ(nameOf(running.process()), std::nullopt);
}

}  // namespace
