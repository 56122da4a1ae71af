// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Description/ZPKSetupProgramFinder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <set>

#include "Tests/Support/TemporaryFolder.h"

namespace fs = std::filesystem;
using zpk_test::TemporaryFolder;
using zpk_test::writeFile;

using Parameters = std::optional<std::vector<std::string>>;
using Lines = std::vector<std::string>;

namespace {

void makeExecutable(const std::string& path) {
    fs::permissions(path, fs::perms::owner_all);
}

class ZPKSetupProgramFinderTest : public ::testing::Test {
protected:
    static std::optional<std::string> find(const std::string& folder) {
        return ZPKSetupProgramFinder::find(folder).path;
    }

    TemporaryFolder m_folder;
};

struct FindRow {
    const char* name;
    const char* startup;  // null: no description
    std::optional<std::string> expected;
    Parameters params;
};

class FindProgramTest : public ZPKSetupProgramFinderTest, public ::testing::WithParamInterface<FindRow> {};

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

    const ZPKSetupProgram found = ZPKSetupProgramFinder::find(staging);
    const std::optional<std::string> expected =
        GetParam().expected ? std::optional(staging + "/" + *GetParam().expected) : std::nullopt;
    EXPECT_EQ(found.path, expected);
    EXPECT_EQ(found.parameters, GetParam().params);
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

TEST_F(ZPKSetupProgramFinderTest, EveryDataTokenIsReplaced) {
    writeFile(m_folder / "s/Info/Startup.xml", R"(<S Exec="$Data$/a/$Data$/b$Data"/>)");
    const std::string data = m_folder / "s/Data";
    EXPECT_EQ(find(m_folder / "s"), data + "/a/" + data + "/b$Data");
}

TEST_F(ZPKSetupProgramFinderTest, DataTokenInTheStagingPathIsNotReplacedAgain) {
    writeFile(m_folder / "$Data$/Info/Startup.xml", R"(<S Exec="$Data$/x"/>)");
    EXPECT_EQ(find(m_folder / "$Data$"), m_folder / "$Data$/Data/x");
}

TEST_F(ZPKSetupProgramFinderTest, ScanPassesOverWhatIsNoProgram) {
    const std::string data = m_folder / "s/Data/";
    writeFile(data + ".hidden", "");
    makeExecutable(data + ".hidden");
    writeFile(data + "text", "");
    fs::create_directories(data + "folder");
    writeFile(data + "Empty.app/Contents/Info.plist", "<plist><dict/></plist>");
    fs::create_symlink("nowhere", data + "dangling");
    const ZPKSetupProgram found = ZPKSetupProgramFinder::find(m_folder / "s");
    EXPECT_EQ(found.path, std::nullopt);
    EXPECT_EQ(found.parameters, std::nullopt);
}

TEST_F(ZPKSetupProgramFinderTest, ScanTakesTheMainProgramOfABundle) {
    const std::string app = m_folder / "s/Data/Any.app/Contents/";
    writeFile(app + "Info.plist",
              "<plist><dict><key>CFBundleExecutable</key><string>Main</string></dict></plist>");
    writeFile(app + "Linux/Main", "");
    makeExecutable(app + "Linux/Main");
    EXPECT_EQ(find(m_folder / "s"), app + "Linux/Main");
}

TEST_F(ZPKSetupProgramFinderTest, MissingPayloadGivesNothing) {
    EXPECT_EQ(find(m_folder / "none"), std::nullopt);
}

TEST_F(ZPKSetupProgramFinderTest, BundleWithAnUpperCaseExtensionIsAPathAllTheSame) {
    const std::string app = m_folder / "s/Data/Setup.APP/Contents/";
    writeFile(app + "Info.plist",
              "<plist><dict><key>CFBundleExecutable</key><string>Main</string></dict></plist>");
    writeFile(app + "Linux/Main", "");
    makeExecutable(app + "Linux/Main");
    writeFile(m_folder / "s/Info/Startup.xml", R"(<S Exec="$Data$/Setup.APP"/>)");
    EXPECT_EQ(find(m_folder / "s"), m_folder / "s/Data/Setup.APP");
}

TEST_F(ZPKSetupProgramFinderTest, ScanGoesInTheFoldersOwnOrder) {
    const std::string data = m_folder / "s/Data";
    std::set<std::string> sorted;
    for (int number = 0; number < 40; ++number) {
        const std::string name = std::to_string(number * 7919 % 1000) + "-program";
        sorted.insert(name);
        writeFile(data + "/" + name, "");
        makeExecutable(data + "/" + name);
    }
    // With the first in the folder's order removed again and again, its order is seen whole.
    Lines expected;
    for (const auto& entry : fs::directory_iterator(data)) {
        expected.push_back(entry.path());
    }
    ASSERT_NE(Lines(sorted.begin(), sorted.end()), expected);
    for (const std::string& path : expected) {
        ASSERT_EQ(find(m_folder / "s"), path);
        fs::remove(path);
    }
}

TEST_F(ZPKSetupProgramFinderTest, ScanGoesOnAfterABundleWithoutAProgram) {
    const std::string data = m_folder / "s/Data/";
    writeFile(data + "program", "");
    makeExecutable(data + "program");
    // Whatever the folder's order, some of these come before the program.
    for (int number = 0; number < 40; ++number) {
        writeFile(data + std::to_string(number) + ".app/Contents/Info.plist", "<plist><dict/></plist>");
    }
    EXPECT_NE(fs::directory_iterator(data)->path().filename(), "program");
    EXPECT_EQ(find(m_folder / "s"), data + "program");
}

class ZPKLinkedStartupTest : public ZPKSetupProgramFinderTest {
protected:
    ZPKLinkedStartupTest() {
        writeFile(m_folder / "s/Data/program", "");
        makeExecutable(m_folder / "s/Data/program");
    }

    const std::string m_startup = R"(<S Exec="$Data$/named" Param="p"/>)";
};

TEST_F(ZPKLinkedStartupTest, LinksInTheStagingFolderAreReadThrough) {
    writeFile(m_folder / "s/Real/real", m_startup);
    fs::create_symlink("real", m_folder / "s/Real/Startup.xml");
    fs::create_symlink("Real", m_folder / "s/Info");
    EXPECT_EQ(find(m_folder / "s"), m_folder / "s/Data/named");
}

TEST_F(ZPKLinkedStartupTest, LinksOutOfTheStagingFolderCountAsNoDescription) {
    writeFile(m_folder / "outside/Startup.xml", m_startup);
    fs::create_symlink(m_folder / "outside", m_folder / "s/Info");
    EXPECT_EQ(find(m_folder / "s"), m_folder / "s/Data/program");
    fs::remove(m_folder / "s/Info");
    fs::create_directory(m_folder / "s/Info");
    fs::create_symlink("../../outside/Startup.xml", m_folder / "s/Info/Startup.xml");
    const ZPKSetupProgram found = ZPKSetupProgramFinder::find(m_folder / "s");
    EXPECT_EQ(found.path, m_folder / "s/Data/program");
    EXPECT_EQ(found.parameters, std::nullopt);
}

TEST_F(ZPKLinkedStartupTest, LinksThatLeadNowhereCountAsNoDescription) {
    fs::create_symlink("nowhere", m_folder / "s/Info");
    EXPECT_EQ(find(m_folder / "s"), m_folder / "s/Data/program");
}

}  // namespace
