// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "InstallerCore/ZPKSecondStage.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <link.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <map>
#include <optional>

#include "Base/ZPKDescriptorIO.h"
#include "Platform/ZPKKernelFile.h"
#include "Tests/Platform/MachineProgram.h"
#include "Tests/Platform/ScopedEnvironment.h"
#include "Tests/Support/TemporaryFolder.h"

namespace {

using Texts = std::vector<std::string>;
using zpk_test::readFile;
using zpk_test::ScopedEnvironment;
using zpk_test::TemporaryFolder;
using zpk_test::writeFile;

const char* const kMachinesLoader = "/lib64/ld-linux-x86-64.so.2";

/// What the second stage wrote, by title.
std::map<std::string, Texts> partsOf(const std::string& output) {
    std::map<std::string, Texts> parts;
    std::string title;
    for (const std::string_view text : ZPKKernelFile::split(output, '\0')) {
        if (text == "arguments" || text == "as it came" || text == "restored" || text == "program") {
            title = text;
        } else if (!text.empty()) {
            parts[title].emplace_back(text);
        }
    }
    return parts;
}

/// The machine's libraries that this test runs on, by their paths: more than the program needs that plays the
/// second stage.
Texts loadedLibraries() {
    Texts paths;
    ::dl_iterate_phdr(
        [](dl_phdr_info* loaded, std::size_t, void* found) {
            if (loaded->dlpi_name[0] == '/') {
                static_cast<Texts*>(found)->emplace_back(loaded->dlpi_name);
            }
            return 0;
        },
        &paths);
    return paths;
}

class ZPKSecondStageTest : public ::testing::Test {
protected:
    void SetUp() override { makeFrameworks(m_folder / "Frameworks"); }

    /// Carried parts that run: this machine's own loader, and a program that tells what it was given.
    void makeFrameworks(const std::string& frameworks) {
        m_frameworks = frameworks;
        std::filesystem::create_directories(frameworks);
        std::filesystem::copy_file(kMachinesLoader, part("ld-linux-x86-64.so.2"));
        std::filesystem::copy_file(ZPK_STAGE_PROBE, part("Zephyrkit-desktop"));
        writeFile(part("libQt6Core.so.6"), zpk_test::MachineProgram().bytes64());
        writeFile(part("fonts/Font.ttf"), "x");
        writeFile(part("Parts"), "fonts/Font.ttf\nlibQt6Core.so.6\n");
        for (const std::filesystem::path library : loadedLibraries()) {
            // The loader is there already, and starts the program under its own path.
            if (!std::filesystem::exists(part(library.filename()))) {
                std::filesystem::create_symlink(library, part(library.filename()));
            }
        }
        writeFile(module(), zpk_test::MachineProgram().bytes64());
    }

    std::string module() const { return m_folder / "ZPKDesktop.so"; }

    std::string part(const std::string& name) const { return m_frameworks + "/" + name; }

    std::string obstacle() const {
        const ZPKOutcome outcome = ZPKSecondStage(m_frameworks, module()).probe();
        return outcome ? "" : outcome.failure().path() + ": " + outcome.failure().reason();
    }

    /// Becomes the second stage in a child; gives its status, 3 when it did not become it.
    int start(Texts arguments, Texts environment) {
        arguments.insert(arguments.begin(), "any/name of it");
        const pid_t child = ::fork();
        if (child == 0) {
            redirect("output", STDOUT_FILENO);
            redirect("errors", STDERR_FILENO);
            const ZPKFailure failure = ZPKSecondStage(m_frameworks, module())
                                           .start(static_cast<int>(arguments.size()),
                                                  pointers(arguments).data(), pointers(environment).data());
            ZPKDescriptorIO::writeWhole(STDERR_FILENO, failure.message() + "\n") ? ::_exit(3) : ::_exit(4);
        }
        int status = 0;
        ::waitpid(child, &status, 0);
        m_parts = partsOf(readFile(m_folder / "output"));
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    void redirect(const std::string& name, int stream) const {
        ::dup2(::open((m_folder / name).c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), stream);
    }

    static std::vector<char*> pointers(Texts& texts) {
        std::vector<char*> pointers;
        for (std::string& text : texts) {
            pointers.push_back(text.data());
        }
        pointers.push_back(nullptr);
        return pointers;
    }

    TemporaryFolder m_folder;
    std::string m_frameworks;
    std::map<std::string, Texts> m_parts;
};

TEST_F(ZPKSecondStageTest, ArgumentsPassThrough) {
    ASSERT_EQ(start({"one", "", "--argv0", "t w\no"}, {"A=1"}), 0) << readFile(m_folder / "errors");
    EXPECT_EQ(m_parts["arguments"], (Texts{"any/name of it", "one", "--argv0", "t w\no"}));
    EXPECT_EQ(m_parts["program"], Texts{part("ld-linux-x86-64.so.2")});
}

TEST_F(ZPKSecondStageTest, TheLoaderObeysNoVariableOfTheMachine) {
    // Each of them alone would keep the second stage from its work.
    const Texts environment{"Z=last comes first",
                            "LD_PRELOAD=/no/such/library.so",
                            "EMPTY=",
                            "LD_TRACE_LOADED_OBJECTS=1",
                            "LD_LIBRARY_PATH=/no/such/folder",
                            "no sign",
                            "ZEPHYRKIT_KEPT_LD_DEBUG=all",
                            "LD_DEBUG=help",
                            "GLIBC_TUNABLES=glibc.rtld.nns=1",
                            "BYTES=\xff\xfe\n",
                            "LD_PRELOAD=twice"};
    ASSERT_EQ(start({}, environment), 0) << readFile(m_folder / "errors");
    EXPECT_EQ(readFile(m_folder / "errors"), "") << "the loader complains of what it cannot preload";
    EXPECT_EQ(m_parts["restored"], environment) << "at their places, byte for byte";
    for (const std::string& variable : m_parts["as it came"]) {
        EXPECT_FALSE(variable.starts_with("LD_") || variable.starts_with("GLIBC_")) << variable;
    }
}

TEST_F(ZPKSecondStageTest, FoldersOfAnyNameWork) {
    for (const char* const name : {"a b", "a:b", "a;b", "$LIB", "$ORIGIN", "a\nb", "\xff\xfe", "-x", "%s"}) {
        makeFrameworks(m_folder / name + "/Frameworks");
        ASSERT_EQ(start({"one"}, {"A=1"}), 0) << name << readFile(m_folder / "errors");
        EXPECT_EQ(m_parts["arguments"].back(), "one") << name;
        EXPECT_EQ(obstacle(), "") << name;
    }
}

TEST_F(ZPKSecondStageTest, AFailedStartComesBackWithItsCause) {
    std::filesystem::remove(part("ld-linux-x86-64.so.2"));
    EXPECT_EQ(start({}, {"LD_PRELOAD="}), 3);
    EXPECT_EQ(readFile(m_folder / "errors"), part("ld-linux-x86-64.so.2") + ": No such file or directory\n");
}

TEST_F(ZPKSecondStageTest, WhatTheLoaderDoesNotStartComesBack) {
    // Sound to the eye, and nothing that could run.
    writeFile(part("Zephyrkit-desktop"), zpk_test::MachineProgram().bytes64());
    EXPECT_EQ(obstacle(), "");
    EXPECT_EQ(start({}, {"A=1"}), 3);
    EXPECT_EQ(readFile(m_folder / "errors"),
              part("Zephyrkit-desktop") + ": the carried loader does not start it\n");
}

TEST_F(ZPKSecondStageTest, WholePartsAreNoObstacle) {
    EXPECT_EQ(obstacle(), "");
    writeFile(part("Parts"), "fonts/Font.ttf");
    EXPECT_EQ(obstacle(), "") << "a last line without an end is a line";
}

TEST_F(ZPKSecondStageTest, AListWithoutEndIsAnObstacle) {
    const std::string line = "fonts/Font.ttf\n";
    std::string list;
    while (list.size() + line.size() <= std::size_t{64} * 1024) {
        list += line;
    }
    writeFile(part("Parts"), list);
    EXPECT_EQ(obstacle(), "");
    writeFile(part("Parts"), list + line);
    EXPECT_EQ(obstacle(), part("Parts") + ": File too large");
}

TEST_F(ZPKSecondStageTest, AnythingMissingIsAnObstacle) {
    const std::string missing = ": No such file or directory";
    for (const char* const name :
         {"ld-linux-x86-64.so.2", "Zephyrkit-desktop", "Parts", "libQt6Core.so.6", "fonts/Font.ttf"}) {
        makeFrameworks(m_folder / "without " + name);
        std::filesystem::remove(part(name));
        EXPECT_EQ(obstacle(), part(name) + missing);
    }
    m_frameworks = m_folder / "nowhere";
    EXPECT_EQ(obstacle(), part("ld-linux-x86-64.so.2") + missing);
}

TEST_F(ZPKSecondStageTest, ALibraryThatTheLoaderWouldTakeFromTheMachineIsAnObstacle) {
    const std::string missing = ": needs libc.so.6, which is not carried";
    const std::string program = readFile(ZPK_STAGE_PROBE);
    std::filesystem::remove(part("libc.so.6"));
    EXPECT_EQ(obstacle(), part("Zephyrkit-desktop") + missing);
    writeFile(part("Zephyrkit-desktop"), zpk_test::MachineProgram().bytes64());
    writeFile(module(), program);
    EXPECT_EQ(obstacle(), module() + missing);
    writeFile(module(), zpk_test::MachineProgram().bytes64());
    writeFile(part("libQt6Core.so.6"), program);
    EXPECT_EQ(obstacle(), part("libQt6Core.so.6") + missing);
}

TEST_F(ZPKSecondStageTest, ALibraryThatIsInNoListNeedsOthersAsWell) {
    writeFile(part("libQt6Core.so.6"), zpk_test::MachineProgram().bytes64());
    std::filesystem::remove(part("libstdc++.so.6"));
    std::string another = readFile(ZPK_STAGE_PROBE);
    another.replace(another.find(std::string("libc.so.6\0", 10)), 9, "libX.so.6");
    writeFile(part("libstdc++.so.6"), another);
    EXPECT_EQ(obstacle(), part("libstdc++.so.6") + ": needs libX.so.6, which is not carried");
}

TEST_F(ZPKSecondStageTest, ALibraryNamedByAPathIsAnObstacle) {
    std::string another = readFile(ZPK_STAGE_PROBE);
    another.replace(another.find(std::string("libc.so.6\0", 10)), 9, "x/bc.so.6");
    writeFile(part("libQt6Core.so.6"), another);
    std::filesystem::create_directory(part("x"));
    writeFile(part("x/bc.so.6"), another);
    EXPECT_EQ(obstacle(), part("libQt6Core.so.6") + ": needs x/bc.so.6, which is not carried");
}

TEST_F(ZPKSecondStageTest, WhatIsNoUsablePartIsAnObstacle) {
    writeFile(part("libQt6Core.so.6"), "");
    EXPECT_EQ(obstacle(), part("libQt6Core.so.6") + ": no library or program for this processor");
    std::filesystem::remove(part("libQt6Core.so.6"));
    std::filesystem::create_directory(part("libQt6Core.so.6"));
    EXPECT_EQ(obstacle(), part("libQt6Core.so.6") + ": Is a directory");
    makeFrameworks(m_folder / "another");
    writeFile(part("fonts/Font.ttf"), "");
    EXPECT_EQ(obstacle(), part("fonts/Font.ttf") + ": not a file with contents");
    std::filesystem::remove(part("Parts"));
    ASSERT_EQ(::mkfifo(part("Parts").c_str(), 0600), 0);
    EXPECT_EQ(obstacle(), part("Parts") + ": not a file with contents") << "and nobody waits for a writer";
    ASSERT_EQ(::chmod(part("Zephyrkit-desktop").c_str(), 0644), 0);
    EXPECT_EQ(obstacle(), part("Zephyrkit-desktop") + ": Permission denied");
    makeFrameworks(m_folder / "without windows");
    std::filesystem::remove(module());
    EXPECT_EQ(obstacle(), module() + ": No such file or directory");
}

TEST(ZPKSecondStageKernelTest, OnlyKernelsThatTheToolkitKnowsSuit) {
    for (const char* const release : {"3.17", "3.17.0", "3.18-rc1", "4.0", "6.1.0-18-amd64", "10.0"}) {
        EXPECT_TRUE(ZPKSecondStage::suitsKernel(release)) << release;
    }
    for (const char* const release : {"3.16.99", "3.2", "2.6.32-754.el6", "3", "", "x", "-4.0"}) {
        EXPECT_FALSE(ZPKSecondStage::suitsKernel(release)) << release;
    }
}

TEST(ZPKSecondStageDisplayTest, EachVariableAloneNamesOne) {
    constexpr const char* kVariables[] = {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"};
    const ScopedEnvironment first(kVariables[0], std::nullopt);
    const ScopedEnvironment second(kVariables[1], std::nullopt);
    const ScopedEnvironment third(kVariables[2], std::nullopt);
    EXPECT_FALSE(ZPKSecondStage::hasDisplay());
    for (const char* const variable : kVariables) {
        const ScopedEnvironment alone(variable, "something");
        EXPECT_TRUE(ZPKSecondStage::hasDisplay()) << variable;
    }
}

}  // namespace
