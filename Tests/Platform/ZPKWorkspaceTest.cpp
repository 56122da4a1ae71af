// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Platform/ZPKWorkspace.h"

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

#include "Tests/Platform/ScopedEnvironment.h"
#include "Tests/Support/TemporaryFolder.h"

namespace {

using zpk_test::ScopedEnvironment;
using zpk_test::TemporaryFolder;
using zpk_test::writeFile;

TEST(ZPKWorkspaceTest, PreferredLanguagesFollowTheEnvironment) {
    using Value = std::optional<std::string>;
    const Value unset;
    struct Row {
        Value language, all, messages, lang;
        std::vector<std::string> preferred;
    };
    const Row rows[] = {
        {unset, unset, unset, unset, {}},
        {unset, unset, unset, "de_DE.UTF-8", {"de_DE", "de"}},
        {unset, unset, "fr_FR.UTF-8", "de_DE.UTF-8", {"fr_FR", "fr"}},
        {unset, "ja_JP.UTF-8", "fr_FR.UTF-8", "de_DE.UTF-8", {"ja_JP", "ja"}},
        {unset, "", "", "de_DE.UTF-8", {"de_DE", "de"}},
        {"ko:pt_BR", unset, unset, "de_DE.UTF-8", {"ko", "pt_BR", "pt"}},
        {"ko", "ja_JP.UTF-8", unset, unset, {"ko"}},
        {"", unset, unset, "de_DE.UTF-8", {"de_DE", "de"}},
        {"ko", unset, unset, unset, {}},
        {"ko", unset, unset, "C", {}},
        {"ko", unset, unset, "POSIX", {}},
        {"ko", "C", unset, "de_DE.UTF-8", {}},
        {"ko", "C.UTF-8", unset, unset, {"ko"}},
        {unset, "C.UTF-8", unset, "de_DE.UTF-8", {}},
        {"en_US.UTF-8:en:de@euro", unset, unset, "en_US.UTF-8", {"en_US", "en", "de"}},
        {"::de::", unset, unset, "en_US.UTF-8", {"de"}},
        {":", unset, unset, "en_US.UTF-8", {}},
        {"fr:C:de", unset, unset, "en_US.UTF-8", {"fr"}},
        {unset, unset, unset, "sr_RS.UTF-8@latin", {"sr_RS", "sr"}},
        {unset, unset, unset, "zh_CN.GB18030", {"zh_CN", "zh", "zh-Hans"}},
        {unset, unset, unset, "zh_SG", {"zh_SG", "zh", "zh-Hans"}},
        {unset, unset, unset, "zh_TW.UTF-8", {"zh_TW", "zh"}},
        {"zh:en", unset, unset, "en_US.UTF-8", {"zh", "zh-Hans", "en"}},
        {"zh_TW:zh_CN", unset, unset, "en_US.UTF-8", {"zh_TW", "zh", "zh_CN", "zh-Hans"}},
        {unset, unset, unset, ".UTF-8", {}},
        {unset, unset, unset, "_", {"_"}},
    };
    for (const Row& row : rows) {
        const ScopedEnvironment language("LANGUAGE", row.language);
        const ScopedEnvironment all("LC_ALL", row.all);
        const ScopedEnvironment messages("LC_MESSAGES", row.messages);
        const ScopedEnvironment lang("LANG", row.lang);
        EXPECT_EQ(ZPKWorkspace::preferredLanguages(), row.preferred)
            << "LANGUAGE=" << row.language.value_or("-") << " LC_ALL=" << row.all.value_or("-")
            << " LC_MESSAGES=" << row.messages.value_or("-") << " LANG=" << row.lang.value_or("-");
    }
}

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
    for (const ZPKRunningApplication& application : ZPKWorkspace::runningApplications()) {
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

TEST(ZPKWorkspaceTest, RunningApplicationsAreTheProcessesOfBundles) {
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

TEST(ZPKWorkspaceTest, RunningApplicationsComeByAscendingProcess) {
    const TemporaryFolder folder;
    const std::string program = makeApplication(folder / "A.app", "A", "Linux/program");
    const RunningProgram first(program);
    const RunningProgram second(program);
    const auto applications = ZPKWorkspace::runningApplications();
    EXPECT_GE(applications.size(), 2u);
    EXPECT_TRUE(std::is_sorted(
        applications.begin(), applications.end(),
        [](const auto& one, const auto& other) { return one.processIdentifier < other.processIdentifier; }));
}

TEST(ZPKWorkspaceTest, RunningApplicationWhoseProgramIsGoneStillCounts) {
    const TemporaryFolder folder;
    const std::string program = makeApplication(folder / "A.app", "A", "Linux/program");
    const RunningProgram running(program);
    std::filesystem::remove(program);
    EXPECT_EQ(nameOf(running.process()), "A");
    std::filesystem::remove_all(folder / "A.app");
    EXPECT_EQ(nameOf(running.process()), std::nullopt);
}

}  // namespace
