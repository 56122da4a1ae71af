// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <sstream>
#include <thread>

#include "Tests/InstallerCore/ZPKCoreFixture.h"
#include "Tests/Support/CapturedStreams.h"

namespace fs = std::filesystem;
using zpk_test::captureStreams;
using zpk_test::readFile;
using zpk_test::writeFile;

namespace {

class ZPKCoreTest : public zpk_test::ZPKCoreFixture {
protected:
    /// What the run itself wrote on standard error, without what the look-ups write there.
    static std::string ownLines(const zpk_test::CapturedStreams& streams) {
        std::string own;
        std::istringstream lines(streams.standardError);
        for (std::string line; std::getline(lines, line);) {
            own += line.starts_with("Zephyrkit: ") ? line + "\n" : "";
        }
        return own;
    }
};

// The sequence

TEST_F(ZPKCoreTest, MenuTitlesAreLocalizedInOrder) {
    writeFile(m_bundle.resource("UILang/Languages.xml"),
              R"(<L FallBackCode="fr"><Language Code="en"/><Language Code="fr"/></L>)");
    writeFile(m_bundle.resource("UILang/fr/ZPKStringTable.def"), "ZPKString_ShowAll = Tout;");
    m_core.awakeFromNib();
    EXPECT_EQ(logged({"menu"}),
              (Lines{"menu 0=ZPKString_AboutZephyrkit", "menu 1=ZPKString_Preferences",
                     "menu 2=ZPKString_Services", "menu 3=ZPKString_HideZephyrkit",
                     "menu 4=ZPKString_HideOthers", "menu 5=Tout", "menu 6=ZPKString_QuitZephyrkit"}));
}

TEST_F(ZPKCoreTest, APackageThatNamesItselfIsNamedInTheMenu) {
    writeFile(m_bundle.resource("UILang/Languages.xml"),
              R"(<L FallBackCode="fr"><Language Code="en"/><Language Code="fr"/></L>)");
    writeFile(m_bundle.resource("UILang/fr/ZPKStringTable.def"),
              "ZPKString_HideZephyrkit = \"Masquer Zephyrkit ici\"; ZPKString_ShowAll = Tout;");
    writeFile(m_bundle.resource("UILang/fr/InfoPlist.strings"), R"("CFBundleDisplayName" = "Suite d'Acme";)");
    m_core.awakeFromNib();
    EXPECT_EQ(logged({"name", "menu 0", "menu 3", "menu 5"}),
              (Lines{"name=Suite d'Acme", "menu 0=ZPKString_AboutZephyrkit",
                     "menu 3=Masquer Suite d'Acme ici", "menu 5=Tout"}));
}

TEST_F(ZPKCoreTest, APackageWithoutANameForPeopleGoesByItsBundlesNameInTheMenu) {
    writeFile(m_bundle.resource("UILang/Languages.xml"), R"(<L FallBackCode="fr"><Language Code="fr"/></L>)");
    writeFile(m_bundle.resource("UILang/fr/ZPKStringTable.def"),
              "ZPKString_HideZephyrkit = \"Masquer Zephyrkit\";");
    m_core.awakeFromNib();
    EXPECT_EQ(logged({"name", "menu 3"}), (Lines{"menu 3=Masquer " + zpk_test::TestBundle::name()}));
}

TEST_F(ZPKCoreTest, WholeRunInItsOrder) {
    addSetup("setup");
    addStartup(R"(Exec="$Data$/setup" Param="a b")");
    pack();
    EXPECT_EQ(m_frontEnd.run(m_core), 0);
    const Lines log = m_frontEnd.log();
    const auto activate = std::find(log.begin(), log.end(), "activate");
    EXPECT_EQ(Lines(activate, log.end()),
              (Lines{"activate", "progress: center", "bar: min=0", "bar: max=100", "bar: threaded",
                     "bar: determinate", "progress: title=ZPKString_FILE_EXTRACT", "modal: begin",
                     "bar: value=10", "bar: redraw", "bar: value=40", "bar: redraw", "bar: value=100",
                     "bar: redraw", "modal: end -1001", "progress: close", "progress: gone", "terminate"}));
    EXPECT_EQ(readFile(m_folder / "record"), m_staging + "/Data/setup\n[a b]\n");
    EXPECT_FALSE(fs::exists(m_staging));
}

TEST_F(ZPKCoreTest, StagingFolderLivesUntilTheSetupProgramHasEnded) {
    addSetup("setup");
    pack();
    bool stagedAtClose = false;
    bool stagedAtEnd = true;
    bool ranBeforeClose = true;
    m_frontEnd.onLog = [&](const std::string& line) {
        if (line == "progress: close") {
            stagedAtClose = fs::exists(m_staging + "/Data/setup") && !fs::exists(m_staging + "/Info.dat");
            ranBeforeClose = fs::exists(m_folder / "record");
        } else if (line == "terminate") {
            stagedAtEnd = fs::exists(m_staging);
        }
    };
    m_frontEnd.run(m_core);
    EXPECT_TRUE(stagedAtClose);
    EXPECT_FALSE(ranBeforeClose);
    EXPECT_FALSE(stagedAtEnd);
    EXPECT_TRUE(setupHasRun());
}

TEST_F(ZPKCoreTest, FullBarStaysForOneSecondBeforeTheWindowCloses) {
    pack();
    std::size_t pausesAtClose = 0;
    m_frontEnd.onLog = [&](const std::string& line) {
        if (line == "progress: close") {
            pausesAtClose = m_clock.pauses.size();
        }
    };
    m_frontEnd.run(m_core);
    EXPECT_EQ(m_clock.pauses, std::vector{std::chrono::milliseconds(1000)});
    EXPECT_EQ(pausesAtClose, 1u);
}

TEST_F(ZPKCoreTest, ComesToTheFrontBeforeAnythingIsStaged) {
    writeFile(m_staging + "/old", "left by an interrupted run");
    pack();
    bool isUntouched = false;
    m_frontEnd.onLog = [&](const std::string& line) {
        if (line == "activate") {
            isUntouched = fs::exists(m_staging + "/old");
        }
    };
    m_frontEnd.run(m_core);
    EXPECT_TRUE(isUntouched);
    EXPECT_EQ(logged({"activate"}).size(), 1u);
}

TEST_F(ZPKCoreTest, OldStagingFolderIsReplaced) {
    writeFile(m_staging + "/Data/old", "left by an interrupted run");
    fs::permissions(m_staging + "/Data/old", fs::perms::owner_all);
    pack();
    m_frontEnd.run(m_core);
    EXPECT_FALSE(fs::exists(m_staging));
    EXPECT_FALSE(setupHasRun());
}

TEST_F(ZPKCoreTest, NoProgramEndsInSilence) {
    pack();
    m_frontEnd.run(m_core);
    EXPECT_EQ(logged({"alert"}), Lines{});
    EXPECT_EQ(m_frontEnd.log().back(), "terminate");
    EXPECT_FALSE(fs::exists(m_staging));
}

// A setup program that cannot be started

TEST_F(ZPKCoreTest, SetupProgramThatCannotStartIsToldWhenTheStagingFolderIsGone) {
    writeFile(m_folder / "source/Data/setup", "#!/no/such/interpreter\n");
    fs::permissions(m_folder / "source/Data/setup", fs::perms::owner_all);
    pack();
    bool isStaged = true;
    m_frontEnd.onLog = [&](const std::string& line) {
        if (line.starts_with("alert")) {
            isStaged = fs::exists(m_staging);
        }
    };
    const auto streams = captureStreams([this] { EXPECT_EQ(m_frontEnd.run(m_core), 0); });
    EXPECT_EQ(logged({"alert", "progress: gone", "terminate"}),
              (Lines{"progress: gone", "alert 2: ZPKString_ERROR_INIT||ZPKString_OK", "terminate"}));
    EXPECT_FALSE(isStaged);
    EXPECT_EQ(m_core.exitStatus(), 1);
    EXPECT_EQ(ownLines(streams), "Zephyrkit: cannot start " + m_staging +
                                     "/Data/setup: Its interpreter /no/such/interpreter is missing\n");
}

TEST_F(ZPKCoreTest, ProgramThatTheUnpackedPayloadLacksIsTold) {
    addStartup("Exec='$Data$/other'");
    addSetup("setup");
    pack();
    const auto streams = captureStreams([this] { m_frontEnd.run(m_core); });
    EXPECT_EQ(logged({"alert"}), Lines{"alert 2: ZPKString_ERROR_INIT||ZPKString_OK"});
    EXPECT_EQ(m_core.exitStatus(), 1);
    EXPECT_EQ(ownLines(streams),
              "Zephyrkit: cannot start " + m_staging + "/Data/other: No such file or directory\n");
}

TEST_F(ZPKCoreTest, SetupProgramThatStartedIsNotToldHoweverItEnds) {
    addSetup("setup");
    pack();
    const auto streams = captureStreams([this] { m_frontEnd.run(m_core); });
    EXPECT_TRUE(setupHasRun());
    EXPECT_EQ(logged({"alert"}), Lines{});
    EXPECT_EQ(m_core.exitStatus(), 0);
    EXPECT_EQ(ownLines(streams), "");
}

// Unpacking that fails

TEST_F(ZPKCoreTest, ProgramThatWasNotUnpackedIsALineAndNoAlert) {
    addStartup("Exec='$Data$/setup'");
    pack();
    writeFile(m_bundle.resource("Data.datx"), "no archive");
    const auto streams = captureStreams([this] { m_frontEnd.run(m_core); });
    EXPECT_EQ(logged({"alert"}), Lines{});
    EXPECT_EQ(m_core.exitStatus(), 0);
    EXPECT_EQ(ownLines(streams), "Zephyrkit: cannot unpack " + m_bundle.resource("Data.datx") + ": " +
                                     m_tool + ": Ended with status 1\nZephyrkit: cannot start " + m_staging +
                                     "/Data/setup: No such file or directory\n");
    EXPECT_FALSE(fs::exists(m_staging));
}

TEST_F(ZPKCoreTest, ProgramThatWasUnpackedBeforeTheRestFailedIsTold) {
    const std::string program = m_folder / "source/Data/setup";
    writeFile(program, "no program");
    fs::permissions(program, fs::perms::owner_all);
    pack();
    installTool("unset ZEPHYRKIT_PARENT; \"${0%/*}/ditto.real\" \"$@\"; exit 5");
    const auto streams = captureStreams([this] { m_frontEnd.run(m_core); });
    EXPECT_EQ(logged({"alert"}), Lines{"alert 2: ZPKString_ERROR_INIT||ZPKString_OK"});
    EXPECT_EQ(m_core.exitStatus(), 1);
    EXPECT_NE(ownLines(streams).find("Data.datx: " + m_tool + ": Ended with status 5\n"), std::string::npos);
}

TEST_F(ZPKCoreTest, DeathOfTheArchiveToolIsALineForEachArchive) {
    addSetup("setup");
    pack();
    installTool("kill -9 $$");
    const auto streams = captureStreams([this] { m_frontEnd.run(m_core); });
    const std::string death = ": " + m_tool + ": Ended by signal 9 (Killed)\n";
    EXPECT_EQ(ownLines(streams), "Zephyrkit: cannot unpack " + m_bundle.resource("Info.datx") + death +
                                     "Zephyrkit: cannot unpack " + m_bundle.resource("Data.datx") + death);
    EXPECT_EQ(logged({"alert"}), Lines{});
    EXPECT_EQ(m_core.exitStatus(), 0);
}

TEST_F(ZPKCoreTest, ArchiveToolThatCannotStartIsALine) {
    addSetup("setup");
    pack();
    fs::remove(m_tool);
    const auto streams = captureStreams([this] { m_frontEnd.run(m_core); });
    EXPECT_NE(ownLines(streams).find("Data.datx: " + m_tool + ": No such file or directory\n"),
              std::string::npos);
    EXPECT_EQ(logged({"alert"}), Lines{});
}

TEST_F(ZPKCoreTest, BundleWithoutArchivesEndsInSilence) {
    const auto streams = captureStreams([this] { m_frontEnd.run(m_core); });
    EXPECT_EQ(ownLines(streams), "");
    EXPECT_EQ(logged({"alert"}), Lines{});
    EXPECT_EQ(m_core.exitStatus(), 0);
}

TEST_F(ZPKCoreTest, StagingFolderThatCannotBeMadeIsTold) {
    // Somebody put a link where the private folder in a shared one belongs, and nothing else will do.
    fs::permissions(m_temporary, fs::perms::all | fs::perms::sticky_bit);
    const zpk_test::ScopedEnvironment noCache("XDG_CACHE_HOME", "/dev/null");
    fs::create_symlink(m_folder.path(), m_temporary + "/com.varno.zephyrkit-" + std::to_string(geteuid()));
    pack();
    m_frontEnd.run(m_core);
    EXPECT_EQ(logged({"alert", "progress", "terminate"}),
              (Lines{"alert 2: ZPKString_TEMPFOLDERCREATEFAILURE||ZPKString_OK", "terminate"}));
}

TEST_F(ZPKCoreTest, LoopThatEndsTooEarlyRunsNothingAndLeavesNothing) {
    addSetup("setup");
    addStartup(std::string("Exec='") + ZPK_TEST_SETUP + "'");
    pack();
    // As at the end of the person's session: the payload is not unpacked yet.
    m_frontEnd.onLog = [this](const std::string& line) {
        if (line == "modal: begin") {
            m_frontEnd.stopModal(ZPKModalResponseAbort);
        }
    };
    m_frontEnd.run(m_core);
    EXPECT_EQ(logged({"bar: value", "progress: close", "terminate"}),
              (Lines{"progress: close", "terminate"}));
    EXPECT_FALSE(fs::exists(m_staging));
    EXPECT_FALSE(setupHasRun());
    EXPECT_TRUE(m_clock.pauses.empty());
}

TEST_F(ZPKCoreTest, EndAskedForAtAnyMomentRunsNothingTellsNothingAndLeavesNothing) {
    addSetup("setup");
    pack();
    for (const char* const moment :
         {"language=", "activate", "progress: title", "modal: begin", "bar: value=10", "bar: value=40",
          "bar: value=100", "modal: end", "progress: close"}) {
        zpk_test::ScriptedFrontEnd frontEnd;
        ZPKCore core(frontEnd, m_volumes, m_clock);
        frontEnd.onLog = [&core, &frontEnd, moment](const std::string& line) {
            if (line.starts_with(moment)) {
                EXPECT_TRUE(core.askForEnd(SIGTERM));
                frontEnd.terminate();
            }
        };
        const auto streams = captureStreams([&] { EXPECT_EQ(frontEnd.run(core), 0); });
        EXPECT_EQ(core.exitStatus(), 128 + SIGTERM) << moment;
        EXPECT_EQ(ownLines(streams), "") << moment;
        EXPECT_FALSE(setupHasRun()) << moment;
        EXPECT_TRUE(fs::is_empty(m_temporary)) << moment;
    }
}

TEST_F(ZPKCoreTest, EndIsNotToBeHadWhileTheSetupProgramRuns) {
    ZPKEarlyEnd end;
    EXPECT_TRUE(end.beginSetup());
    EXPECT_FALSE(end.ask(SIGTERM));
    EXPECT_FALSE(end.isAsked());
    end.endSetup();
    EXPECT_TRUE(end.ask(SIGHUP));
    EXPECT_TRUE(end.ask(SIGINT));
    EXPECT_EQ(end.signal(), SIGHUP);
    EXPECT_FALSE(end.beginSetup());
}

TEST_F(ZPKCoreTest, ExitOfTheProcessInMidRunLeavesNothing) {
    addSetup("setup");
    pack();
    bool isStaged = true;
    // As when the toolkit ends the process: the main thread does not come back from the loop.
    m_frontEnd.onLog = [&](const std::string& line) {
        if (line == "bar: value=40") {
            m_core.cutShort();
            isStaged = fs::exists(m_staging);
            m_frontEnd.stopModal(ZPKModalResponseAbort);
        }
    };
    m_frontEnd.run(m_core);
    EXPECT_FALSE(isStaged);
    EXPECT_FALSE(fs::exists(m_staging));
    EXPECT_FALSE(setupHasRun());
}

TEST_F(ZPKCoreTest, ToolHasEndedWhenTheStagingFolderGoes) {
    addSetup("setup");
    pack();
    installEndlessTool();
    bool toolRuns = true;
    bool isStaged = true;
    std::thread other;
    m_frontEnd.onLog = [&](const std::string& line) {
        if (line == "bar: value=40") {
            other = std::thread([&] {
                const pid_t tool = numberOfTool();
                m_frontEnd.performOnMainThreadAndWait([&, tool] {
                    m_core.cutShort();
                    toolRuns = runs(tool);
                    isStaged = fs::exists(m_staging);
                    m_frontEnd.stopModal(ZPKModalResponseAbort);
                });
            });
        }
    };
    m_frontEnd.run(m_core);
    other.join();
    EXPECT_FALSE(toolRuns);
    EXPECT_FALSE(isStaged);
}

TEST_F(ZPKCoreTest, PrivateOperationsAreDoneByTheirClasses) {
    addSetup("setup");
    addStartup(R"(Exec="$Data$/setup" Param="a b")");
    pack();
    const std::string staging = m_folder / "staging";
    fs::create_directory(staging);
    m_core.extractDataTask(
        {{"DataFilePath", m_bundle.resource("Data.datx")}, {"TemporaryFolderPath", staging}});
    writeFile(staging + "/Info/Startup.xml", readFile(m_folder / "source/Info/Startup.xml"));
    ZPKCore::Parameters params;
    EXPECT_EQ(m_core.executableFileAtTemporaryFolder(staging, nullptr), staging + "/Data/setup");
    const auto program = m_core.executableFileAtTemporaryFolder(staging, &params);
    EXPECT_EQ(params, Lines{"a b"});
    m_core.executeFile(program, params, true);
    EXPECT_EQ(readFile(m_folder / "record"), staging + "/Data/setup\n[a b]\n");
    EXPECT_FALSE(m_core.isAlreadyExecuting());
}

TEST_F(ZPKCoreTest, BrokenFormRunsNothingAndLeavesNothing) {
    addSetup("setup");
    addStartup(std::string("Exec='") + ZPK_TEST_SETUP + "'");  // there without the payload
    pack();
    m_frontEnd.formsAreBroken = true;
    m_frontEnd.run(m_core);
    EXPECT_EQ(m_frontEnd.log().back(), "terminate");
    EXPECT_FALSE(fs::exists(m_staging));
    EXPECT_FALSE(setupHasRun());
}

}  // namespace
