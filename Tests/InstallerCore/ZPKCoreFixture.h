// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "Common/CLocaleDefine.h"
#include "Common/CResourceBundle.h"
#include "InstallerCore/ZPKCore.h"
#include "Tests/Platform/ScopedEnvironment.h"
#include "Tests/Support/RecordingClock.h"
#include "Tests/Support/ScriptedFrontEnd.h"
#include "Tests/Support/TemporaryFolder.h"
#include "Tests/Support/TestBundle.h"
#include "UserInterface/ZPKRemovableVolumes.h"

using Lines = std::vector<std::string>;

namespace zpk_test {

/// Folders that stand for mounted volumes; true marks an optical disc.
class TestVolumes : public ZPKRemovableVolumes {
public:
    std::map<std::string, bool> volumes;

    Lines mountedRemovableMedia() const override {
        Lines paths;
        for (const auto& [path, isDisc] : volumes) {
            paths.push_back(path);
        }
        return paths;
    }
    bool isCDMediaAtPath(const std::string& path) const override { return volumes.at(path); }
};

/// A bundle, a package source and a launch sequence with a scripted person.
class ZPKCoreFixture : public ::testing::Test {
protected:
    ZPKCoreFixture() {
        namespace fs = std::filesystem;
        fs::create_directory(m_temporary);
        fs::permissions(m_temporary, fs::perms::owner_all);
    }

    /// The sources of texts belong to the process: the next test in it must not find this one's.
    ~ZPKCoreFixture() override {
        using varno_zpk::CResourceBundle;
        CResourceBundle::ClearAllDefaultBundles();
        CResourceBundle::SetCurrentLanguage(varno_zpk::CLocaleDefine::BASIC_LANGUAGE);
        CResourceBundle::SetAlternativeLanguage(varno_zpk::CLocaleDefine::BASIC_LANGUAGE);
    }

    /// A payload program at `relative` in the package's Data folder.
    void addSetup(const std::string& relative) {
        const std::string path = m_folder / ("source/Data/" + relative);
        std::filesystem::create_directories(std::filesystem::path(path).parent_path());
        std::filesystem::copy_file(ZPK_TEST_SETUP, path);
    }

    void addStartup(const std::string& attributes) {
        writeFile(m_folder / "source/Info/Startup.xml", "<Startup " + attributes + "/>");
    }

    void addConditions(const std::string& contents) {
        writeFile(m_folder / "source/Info/Condition.xml", "<UpdateInfo>" + contents + "</UpdateInfo>");
    }

    void pack() {
        std::filesystem::create_directories(m_folder / "source/Info");
        std::filesystem::create_directories(m_folder / "source/Data");
        m_bundle.pack(m_folder / "source/Info", "Info.datx");
        m_bundle.pack(m_folder / "source/Data", "Data.datx");
    }

    /// Puts a script in the archive tool's place; the tool itself stays beside it.
    void installTool(const std::string& script) const {
        std::filesystem::rename(m_tool, m_tool + ".real");
        writeFile(m_tool, "#!/bin/sh\n" + script + "\n");
        std::filesystem::permissions(m_tool, std::filesystem::perms::owner_all);
    }

    /// Puts a tool in its place that tells its process number, and never ends, when it is given the payload.
    void installEndlessTool() const {
        installTool("case \"$*\" in *Data.dat*) ;; *) exec \"$0.real\" \"$@\" ;; esac\necho $$ > '" +
                    m_number + ".new'; mv '" + m_number + ".new' '" + m_number + "'\nexec sleep 600");
    }

    /// Waits until the endless tool runs.
    pid_t numberOfTool() const {
        while (!std::filesystem::exists(m_number)) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return std::stoi(readFile(m_number));
    }

    static bool runs(pid_t process) { return ::kill(process, 0) == 0; }

    bool setupHasRun() const { return std::filesystem::exists(m_folder / "record"); }

    /// The lines of the log that begin with one of the words.
    Lines logged(const Lines& words) const {
        Lines lines;
        for (const std::string& line : m_frontEnd.log()) {
            if (std::any_of(words.begin(), words.end(),
                            [&line](const auto& word) { return line.starts_with(word); })) {
                lines.push_back(line);
            }
        }
        return lines;
    }

    TemporaryFolder m_folder;
    std::string m_temporary = m_folder / "tmp";
    std::string m_staging = m_temporary + "/VarnoZPK_TEMP";
    std::string m_library = m_folder / "library";
    ScopedEnvironment m_environment[5] = {{"TMPDIR", m_temporary},
                                          {"XDG_DATA_DIRS", m_library},
                                          {"ZPK_TEST_RECORD", m_folder / "record"},
                                          {"LANGUAGE", std::nullopt},
                                          {"LC_ALL", "C.UTF-8"}};
    TestBundle m_bundle{m_folder / "TestSetup.app"};
    const std::string m_tool = m_bundle.path() + "/Contents/Helpers/ditto";
    const std::string m_number = m_folder / "number";
    ScriptedFrontEnd m_frontEnd;
    TestVolumes m_volumes;
    RecordingClock m_clock;
    ZPKCore m_core{m_frontEnd, m_volumes, m_clock};
};

}  // namespace zpk_test
