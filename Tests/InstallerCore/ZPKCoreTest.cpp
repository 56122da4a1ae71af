// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>

#include "Tests/InstallerCore/ZPKCoreFixture.h"
#include "Tests/Support/CapturedStreams.h"

namespace fs = std::filesystem;
using zpk_test::readFile;
using zpk_test::writeFile;

namespace {

void makeExecutable(const std::string& path) {
    fs::permissions(path, fs::perms::owner_all);
}

class ZPKCoreTest : public zpk_test::ZPKCoreFixture {};

// Finding the program

struct FindRow {
    const char* name;
    const char* startup;  // null: no description
    std::optional<std::string> expected;
    Parameters params;
};

class FindProgramTest : public ZPKCoreTest, public ::testing::WithParamInterface<FindRow> {};

TEST_P(FindProgramTest, FollowsTheDescriptionThenThePayload) {
    const std::string staging = m_folder / "staging";
    writeFile(staging + "/Data/setup", "");
    makeExecutable(staging + "/Data/setup");
    const std::string app = staging + "/Data/sub/Setup.app/Contents/";
    writeFile(app + "Info.plist",
              "<plist><dict><key>CFBundleExecutable</key><string>Main</string></dict></plist>");
    writeFile(app + "Linux/Main", "");
    makeExecutable(app + "Linux/Main");
    writeFile(staging + "/Data/sub/Empty.app/Contents/Info.plist", "<plist><dict/></plist>");
    if (GetParam().startup != nullptr) {
        writeFile(staging + "/Info/Startup.xml", GetParam().startup);
    }

    Parameters params = Lines{"left from before"};
    const auto found = m_door.find(staging, &params);
    const std::optional<std::string> expected =
        GetParam().expected ? std::optional(staging + "/" + *GetParam().expected) : std::nullopt;
    EXPECT_EQ(found, expected);
    EXPECT_EQ(params, GetParam().params);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, FindProgramTest,
    ::testing::Values(
        FindRow{"BundleStandsForItsMainProgram", R"(<S Exec="$Data$/sub/Setup.app" Param="p"/>)",
                "Data/sub/Setup.app/Contents/Linux/Main", Lines{"p"}},
        FindRow{"PlainProgramWithEmptyParam", R"(<S Exec="$Data$/setup" Param=""/>)", "Data/setup",
                Lines{""}},
        FindRow{"PlainProgramWithoutParam", R"(<S Exec="$Data$/setup"/>)", "Data/setup", Lines{""}},
        FindRow{"EmptyExecIgnoresParam", R"(<S Exec="" Param="p"/>)", "Data/setup", std::nullopt},
        FindRow{"NoExecIgnoresParam", R"(<S Param="p"/>)", "Data/setup", std::nullopt},
        FindRow{"ParamIsNeverSplit", R"(<S Exec="$Data$/setup" Param="-a -b"/>)", "Data/setup",
                Lines{"-a -b"}},
        FindRow{"ParamIsNeverExpanded", R"(<S Exec="$Data$/setup" Param="$Data$"/>)", "Data/setup",
                Lines{"$Data$"}},
        FindRow{"UpperCaseExtensionIsAPath", R"(<S Exec="$Data$/Other.APP" Param="p"/>)", "Data/Other.APP",
                Lines{"p"}},
        FindRow{"MissingProgramIsReturnedAllTheSame", R"(<S Exec="$Data$/none" Param="p"/>)", "Data/none",
                Lines{"p"}},
        FindRow{"BundleWithoutProgramFallsBackAndKeepsParam", R"(<S Exec="$Data$/sub/Empty.app" Param="p"/>)",
                "Data/setup", Lines{"p"}},
        FindRow{"AppThatIsNoBundleFallsBackAndKeepsParam", R"(<S Exec="$Data$/none.app" Param="p"/>)",
                "Data/setup", Lines{"p"}},
        FindRow{"MalformedDescriptionFallsBack", "<S Exec=", "Data/setup", std::nullopt},
        FindRow{"NoDescriptionFallsBack", nullptr, "Data/setup", std::nullopt}),
    [](const auto& row) { return row.param.name; });

TEST_F(ZPKCoreTest, EveryDataTokenIsReplaced) {
    writeFile(m_folder / "s/Info/Startup.xml", R"(<S Exec="$Data$/a/$Data$/b$Data"/>)");
    const std::string data = m_folder / "s/Data";
    EXPECT_EQ(m_door.find(m_folder / "s", nullptr), data + "/a/" + data + "/b$Data");
}

TEST_F(ZPKCoreTest, DataTokenInTheStagingPathIsNotReplacedAgain) {
    writeFile(m_folder / "$Data$/Info/Startup.xml", R"(<S Exec="$Data$/x"/>)");
    EXPECT_EQ(m_door.find(m_folder / "$Data$", nullptr), m_folder / "$Data$/Data/x");
}

TEST_F(ZPKCoreTest, ScanPassesOverWhatIsNoProgram) {
    const std::string data = m_folder / "s/Data/";
    writeFile(data + ".hidden", "");
    makeExecutable(data + ".hidden");
    writeFile(data + "text", "");
    fs::create_directories(data + "folder");
    writeFile(data + "Empty.app/Contents/Info.plist", "<plist><dict/></plist>");
    fs::create_symlink("nowhere", data + "dangling");
    Parameters params;
    EXPECT_EQ(m_door.find(m_folder / "s", &params), std::nullopt);
    EXPECT_EQ(params, std::nullopt);
}

TEST_F(ZPKCoreTest, ScanTakesTheMainProgramOfABundle) {
    const std::string app = m_folder / "s/Data/Any.app/Contents/";
    writeFile(app + "Info.plist",
              "<plist><dict><key>CFBundleExecutable</key><string>Main</string></dict></plist>");
    writeFile(app + "Linux/Main", "");
    makeExecutable(app + "Linux/Main");
    EXPECT_EQ(m_door.find(m_folder / "s", nullptr), app + "Linux/Main");
}

TEST_F(ZPKCoreTest, MissingPayloadGivesNothing) {
    EXPECT_EQ(m_door.find(m_folder / "none", nullptr), std::nullopt);
}

// Running the program

TEST_F(ZPKCoreTest, NothingToExecuteDoesNothing) {
    const auto streams = zpk_test::captureStreams([this] { m_door.execute(std::nullopt, Lines{"x"}); });
    EXPECT_EQ(streams.standardOutput + streams.standardError, "");
}

TEST_F(ZPKCoreTest, ExecuteWaitsAndPassesEachArgumentAsItIs) {
    m_door.execute(ZPK_TEST_SETUP, Lines{"-a -b", "", "'\"$x\n"});
    EXPECT_EQ(readFile(m_folder / "record"), std::string(ZPK_TEST_SETUP) + "\n[-a -b]\n[]\n['\"$x\n]\n");
}

TEST_F(ZPKCoreTest, ExecuteWithoutParametersPassesNone) {
    m_door.execute(ZPK_TEST_SETUP, std::nullopt);
    EXPECT_EQ(readFile(m_folder / "record"), std::string(ZPK_TEST_SETUP) + "\n");
}

TEST_F(ZPKCoreTest, ProgramThatCannotStartIsNamedOnStandardError) {
    const auto streams =
        zpk_test::captureStreams([this] { m_door.execute(m_folder / "none", std::nullopt); });
    EXPECT_EQ(streams.standardError,
              "Zephyrkit: cannot start " + (m_folder / "none") + ": No such file or directory\n");
}

// Unpacking the payload

TEST_F(ZPKCoreTest, ExtractTaskReportsThreeValuesAndEndsTheLoop) {
    addSetup("setup");
    pack();
    const std::string staging = m_folder / "staging";
    fs::create_directory(staging);
    ZPKProgressWindowController controller(m_frontEnd);
    Lines seen;
    m_frontEnd.onLog = [&](const std::string& line) {
        if (line.starts_with("bar: value")) {
            seen.push_back(line + (fs::exists(staging + "/Data.dat") ? " plain" : "") +
                           (fs::exists(staging + "/Data/setup") ? " unpacked" : ""));
        }
    };
    m_door.extract(m_bundle.resource("Data.datx"), staging, &controller);
    EXPECT_EQ(seen, (Lines{"bar: value=10", "bar: value=40 plain", "bar: value=100 plain unpacked"}));
    EXPECT_FALSE(fs::exists(staging + "/Data.dat"));
    EXPECT_EQ(m_frontEnd.runModalForWindow(*controller.window()), ZPKModalResponseAbort);
}

TEST_F(ZPKCoreTest, ExtractTaskWorksWithoutController) {
    addSetup("setup");
    pack();
    const std::string staging = m_folder / "staging";
    fs::create_directory(staging);
    m_door.extract(m_bundle.resource("Data.datx"), staging, nullptr);
    EXPECT_TRUE(fs::exists(staging + "/Data/setup"));
    EXPECT_EQ(logged({"bar"}), Lines{});
}

TEST_F(ZPKCoreTest, ExtractTaskOfMissingArchiveStillEndsTheLoop) {
    ZPKProgressWindowController controller(m_frontEnd);
    m_door.extract(m_folder / "none", m_folder / "nowhere", &controller);
    EXPECT_EQ(m_frontEnd.runModalForWindow(*controller.window()), ZPKModalResponseAbort);
}

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

TEST_F(ZPKCoreTest, FullBarStaysForOneSecond) {
    pack();
    std::chrono::steady_clock::time_point end;
    std::chrono::steady_clock::duration pause{};
    m_frontEnd.onLog = [&](const std::string& line) {
        if (line.starts_with("modal: end")) {
            end = std::chrono::steady_clock::now();
        } else if (line == "progress: close") {
            pause = std::chrono::steady_clock::now() - end;
        }
    };
    m_frontEnd.run(m_core);
    EXPECT_GE(pause, std::chrono::seconds(1));
}

TEST_F(ZPKCoreTest, OldStagingFolderIsReplaced) {
    writeFile(m_staging + "/Data/old", "left by an interrupted run");
    makeExecutable(m_staging + "/Data/old");
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

TEST_F(ZPKCoreTest, StagingFolderThatCannotBeMadeIsTold) {
    // Somebody put a link where the private folder in a shared one belongs.
    fs::permissions(m_temporary, fs::perms::all);
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
    m_frontEnd.onLog = nullptr;
    EXPECT_EQ(logged({"bar: value", "progress: close", "terminate"}),
              (Lines{"progress: close", "terminate"}));
    EXPECT_FALSE(fs::exists(m_staging));
    EXPECT_FALSE(setupHasRun());
    // The extraction thread ends by itself, with nowhere left to write to.
    m_frontEnd.waitForAbort();
    EXPECT_FALSE(fs::exists(m_staging));
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
