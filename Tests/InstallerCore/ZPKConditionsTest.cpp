// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>

#include "Tests/InstallerCore/ZPKCoreFixture.h"

namespace fs = std::filesystem;
using zpk_test::readFile;
using zpk_test::TestBundle;
using zpk_test::writeFile;

namespace {

constexpr const char* kProducts =
    R"(<TargetItems><ItemInfo DisplayName="Tandem &lt;b&gt;"/><ItemInfo DisplayName="Set"/></TargetItems>)";

class ZPKConditionsTest : public zpk_test::ZPKCoreFixture {
protected:
    void installSignature(const std::string& signature) {
        installSoftwareList(
            "<plist><dict><key>Varno "
            "Utilities</key><array><integer>1</integer><string>other</string><string>" +
            signature + "</string></array></dict></plist>");
    }
};

// The check

TEST_F(ZPKConditionsTest, MissingDescriptionAllows) {
    EXPECT_TRUE(m_door.check(m_folder / "none"));
}

TEST_F(ZPKConditionsTest, MalformedDescriptionRefusesWithEmptyLists) {
    check(std::string("<U><Conditions><Disc FilePath='a'/></Conditions>") + kProducts + "</U>");
    EXPECT_FALSE(check("<UpdateInfo><Conditions>"));
    EXPECT_EQ(m_door.softwares(), Lines{});
    EXPECT_EQ(m_door.filePaths(), Lines{});
}

TEST_F(ZPKConditionsTest, EmptyDescriptionRefuses) {
    EXPECT_FALSE(check("<UpdateInfo/>"));
    EXPECT_FALSE(check("<UpdateInfo><Conditions/></UpdateInfo>"));
    EXPECT_EQ(m_door.filePaths(), Lines{});
}

TEST_F(ZPKConditionsTest, SignatureInTheListAllowsAndLeavesDiscsOut) {
    installSignature("sig.1");
    EXPECT_TRUE(
        check("<U><Conditions><Disc FilePath='a'/><UIMLog Signature='sig.0'/><UIMLog Signature='sig.1'/>"
              "</Conditions></U>"));
    EXPECT_EQ(m_door.filePaths(), Lines{});
}

TEST_F(ZPKConditionsTest, SignatureMustBeExact) {
    installSignature("sig.1");
    for (const char* signature : {"SIG.1", "sig.1 ", "sig", ""}) {
        EXPECT_FALSE(
            check("<U><Conditions><UIMLog Signature='" + std::string(signature) + "'/></Conditions></U>"))
            << signature;
    }
}

TEST_F(ZPKConditionsTest, ListInTextFormIsRead) {
    installSoftwareList("{ \"Varno Utilities\" = (other, \"sig.1\"); }");
    EXPECT_TRUE(check("<U><Conditions><UIMLog Signature='sig.1'/></Conditions></U>"));
    EXPECT_FALSE(check("<U><Conditions><UIMLog Signature='sig.2'/></Conditions></U>"));
}

TEST_F(ZPKConditionsTest, ListInBinaryFormIsRead) {
    installSignature("sig.1");
    const std::string path = m_library + "/Preferences/com.varno.ic_installer.plist";
    ASSERT_EQ(std::system(("plistutil -i '" + path + "' -o '" + path + ".bin'").c_str()), 0);
    fs::rename(path + ".bin", path);
    ASSERT_EQ(readFile(path).substr(0, 6), "bplist");
    EXPECT_TRUE(check("<U><Conditions><UIMLog Signature='sig.1'/></Conditions></U>"));
}

TEST_F(ZPKConditionsTest, ListThatCannotBeUsedCountsAsNotInstalled) {
    for (const char* list : {"", "<plist>", "<plist><array/></plist>", "<plist><dict/></plist>",
                             "<plist><dict><key>Varno Utilities</key><string>sig.1</string></dict></plist>",
                             "bplist00", "bplist00\xff\xff\xff\xff"}) {
        installSoftwareList(list);
        EXPECT_FALSE(check("<U><Conditions><UIMLog Signature='sig.1'/></Conditions></U>")) << list;
    }
}

TEST_F(ZPKConditionsTest, NoLibraryFolderCountsAsNotInstalled) {
    const zpk_test::ScopedEnvironment nowhere("XDG_DATA_DIRS", "relative");
    EXPECT_FALSE(check("<U><Conditions><UIMLog Signature='s'/><UninstallXml AppName='x'/></Conditions></U>"));
}

TEST_F(ZPKConditionsTest, UninstallDescriptionAllows) {
    installUninstallDescription("Tandem.xml");
    EXPECT_FALSE(check("<U><Conditions><UninstallXml AppName='tandem.xml'/></Conditions></U>"));
    EXPECT_TRUE(check("<U><Conditions><UninstallXml AppName='Tandem.xml'/></Conditions></U>"));
}

TEST_F(ZPKConditionsTest, EmptyAppNameAsksForTheUninstallFolder) {
    const char* conditions = "<U><Conditions><UninstallXml/></Conditions></U>";
    EXPECT_FALSE(check(conditions));
    installUninstallDescription("any");
    EXPECT_TRUE(check(conditions));
}

TEST_F(ZPKConditionsTest, OddAppNamesAreOnlyLookedUp) {
    installUninstallDescription("any");
    EXPECT_TRUE(check("<U><Conditions><UninstallXml AppName='../Uninstall/any'/></Conditions></U>"));
    EXPECT_FALSE(check("<U><Conditions><UninstallXml AppName='/etc/passwd'/></Conditions></U>"));
    EXPECT_FALSE(
        check("<U><Conditions><UninstallXml AppName='" + std::string(100000, 'x') + "'/></Conditions></U>"));
}

TEST_F(ZPKConditionsTest, RegistryNeverAllows) {
    EXPECT_FALSE(
        check(std::string("<U><Conditions><Registry KeyName='x'/></Conditions>") + kProducts + "</U>"));
    EXPECT_EQ(m_door.filePaths(), Lines{});
    EXPECT_EQ(m_door.softwares(), (Lines{"Tandem <b>", "Set"}));
}

TEST_F(ZPKConditionsTest, DiscsAreCollectedInOrder) {
    EXPECT_FALSE(
        check("<U><Conditions><Disc FilePath='b/*.bin'/><UIMLog Signature='s'/><Disc/><Disc FilePath='a'/>"
              "</Conditions></U>"));
    EXPECT_EQ(m_door.filePaths(), (Lines{"b/*.bin", "", "a"}));
}

TEST_F(ZPKConditionsTest, ASecondCheckStartsAfresh) {
    check(std::string("<U><Conditions><Disc FilePath='a'/></Conditions>") + kProducts + "</U>");
    EXPECT_TRUE(m_door.check(m_folder / "none"));
    EXPECT_EQ(m_door.filePaths(), Lines{});
    EXPECT_EQ(m_door.softwares(), Lines{});
}

TEST_F(ZPKConditionsTest, ThousandsOfEntries) {
    std::string entries;
    for (int index = 0; index < 20000; ++index) {
        entries += "<Disc FilePath='" + std::to_string(index) + "'/>";
    }
    EXPECT_FALSE(check("<U><Conditions>" + entries + "</Conditions></U>"));
    EXPECT_EQ(m_door.filePaths().size(), 20000u);
}

// The sequence

TEST_F(ZPKConditionsTest, MetConditionsInstall) {
    installUninstallDescription("Tandem.xml");
    addConditions("<Conditions><Disc FilePath='x'/><UninstallXml AppName='Tandem.xml'/></Conditions>");
    addSetup("setup");
    pack();
    m_frontEnd.run(m_core);
    EXPECT_TRUE(setupHasRun());
    EXPECT_EQ(logged({"disc", "alert"}), Lines{});
}

TEST_F(ZPKConditionsTest, UnmetConditionsListTheProductsAfterCleaningUp) {
    addConditions(kProducts);
    addSetup("setup");
    pack();
    writeFile(m_bundle.resource("UILang/Languages.xml"), "<L FallBackCode='en'><Language Code='en'/></L>");
    writeFile(m_bundle.resource("UILang/en/ZPKStringTable.def"),
              "\"ZPKString_UPDATE_FAILURE\" = \"Only:\\n%s\\n(100 %)\";");
    bool staged = true;
    m_frontEnd.onLog = [&](const std::string& line) {
        if (line.starts_with("alert")) {
            staged = fs::exists(m_staging);
        }
    };
    m_frontEnd.run(m_core);
    EXPECT_EQ(logged({"alert", "disc", "progress", "terminate"}),
              (Lines{"alert 2: Only:\n  Tandem <b>\n  Set\n(100 %)||ZPKString_OK", "terminate"}));
    EXPECT_FALSE(staged);
    EXPECT_FALSE(setupHasRun());
}

TEST_F(ZPKConditionsTest, EmptyProductListIsShownAllTheSame) {
    addConditions("");
    pack();
    m_frontEnd.run(m_core);
    EXPECT_EQ(logged({"alert"}), (Lines{"alert 2: ZPKString_UPDATE_FAILURE||ZPKString_OK"}));
}

class ZPKDiscSequenceTest : public ZPKConditionsTest {
protected:
    ZPKDiscSequenceTest() {
        addConditions(std::string("<Conditions><Disc FilePath='right.txt'/></Conditions>") + kProducts);
        addSetup("setup");
    }
};

TEST_F(ZPKDiscSequenceTest, FoundDiscInstalls) {
    pack();
    writeFile(m_folder / "disc/right.txt", "");
    m_volumes.volumes = {{m_folder / "disc", true}};
    bool conditionFileGone = false;
    m_frontEnd.onDiscWindow = [&](const auto& actions) {
        conditionFileGone = fs::exists(m_staging + "/Info") && !fs::exists(m_staging + "/Info/Condition.xml");
        actions.pushSearch();
    };
    m_frontEnd.run(m_core);
    EXPECT_TRUE(conditionFileGone);
    EXPECT_TRUE(setupHasRun());
    EXPECT_EQ(logged({"alert"}), Lines{});
    EXPECT_EQ(logged({"modal: end"}), (Lines{"modal: end -1000", "modal: end -1001"}));
    EXPECT_FALSE(fs::exists(m_staging));
}

TEST_F(ZPKDiscSequenceTest, CancelEndsWithoutProductAlert) {
    pack();
    m_frontEnd.onDiscWindow = [](const auto& actions) { actions.pushCancel(); };
    m_frontEnd.run(m_core);
    EXPECT_EQ(logged({"alert", "terminate"}), Lines{"terminate"});
    EXPECT_EQ(logged({"disc: close"}).size(), 1u);
    EXPECT_FALSE(setupHasRun());
    EXPECT_FALSE(fs::exists(m_staging));
}

TEST_F(ZPKDiscSequenceTest, CloseBoxActsLikeCancel) {
    pack();
    m_frontEnd.run(m_core);
    EXPECT_EQ(logged({"alert", "modal: end", "terminate"}), (Lines{"modal: end -1001", "terminate"}));
    EXPECT_FALSE(setupHasRun());
}

TEST_F(ZPKDiscSequenceTest, WrongDiscIsToldAndAnotherMayBeTried) {
    pack();
    m_volumes.volumes = {{m_folder / "disc", true}};
    int presses = 0;
    m_frontEnd.onDiscWindow = [&](const auto& actions) {
        if (++presses == 2) {
            writeFile(m_folder / "disc/right.txt", "");
        }
        actions.pushSearch();
    };
    m_frontEnd.run(m_core);
    EXPECT_EQ(presses, 2);
    EXPECT_EQ(logged({"alert"}), Lines{"alert 2: ZPKString_UPDATE_INVALID_DISC||ZPKString_OK"});
    EXPECT_TRUE(setupHasRun());
}

TEST_F(ZPKDiscSequenceTest, BrokenSearchFormEndsWithoutInstalling) {
    pack();
    m_frontEnd.formsAreBroken = true;
    m_frontEnd.run(m_core);
    EXPECT_EQ(m_frontEnd.log().back(), "terminate");
    EXPECT_FALSE(setupHasRun());
    EXPECT_FALSE(fs::exists(m_staging));
}

// One instance

/// A process whose executable lies in a bundle of that name, alive as long as this object.
class RunningCopy {
public:
    RunningCopy(const std::string& bundle, const std::string& name, const std::string& strings = "") {
        writeFile(bundle + "/Contents/Info.plist",
                  "<plist><dict><key>CFBundleName</key><string>" + name + "</string></dict></plist>");
        if (!strings.empty()) {
            writeFile(bundle + "/Contents/Resources/InfoPlist.strings",
                      "\"CFBundleName\" = \"" + strings + "\";");
        }
        const std::string program = bundle + "/Contents/Linux/Program";
        fs::create_directories(bundle + "/Contents/Linux");
        fs::copy_file("/bin/sleep", program);
        m_child = fork();
        if (m_child == 0) {
            execl(program.c_str(), program.c_str(), "60", nullptr);
            _exit(127);
        }
        while (fs::read_symlink("/proc/" + std::to_string(m_child) + "/exe").filename() != "Program") {
            usleep(1000);
        }
    }
    ~RunningCopy() {
        kill(m_child, SIGKILL);
        waitpid(m_child, nullptr, 0);
    }
    RunningCopy(const RunningCopy&) = delete;
    RunningCopy& operator=(const RunningCopy&) = delete;

private:
    pid_t m_child = -1;
};

TEST_F(ZPKConditionsTest, AloneRuns) {
    EXPECT_FALSE(m_door.isAlreadyExecuting());
}

TEST_F(ZPKConditionsTest, SecondCopyEndsInSilenceBeforeStaging) {
    const RunningCopy other(m_folder / "Other.app", TestBundle::name());
    writeFile(m_staging + "/of the other", "");
    pack();
    m_frontEnd.run(m_core);
    EXPECT_EQ(m_frontEnd.log().back(), "terminate");
    EXPECT_EQ(logged({"activate", "alert", "progress"}), Lines{});
    EXPECT_TRUE(fs::exists(m_staging + "/of the other"));
}

TEST_F(ZPKConditionsTest, OtherNamesMayRun) {
    const RunningCopy longer(m_folder / "A.app", TestBundle::name() + "2");
    const RunningCopy capitals(m_folder / "B.app", "t" + TestBundle::name().substr(1));
    EXPECT_FALSE(m_door.isAlreadyExecuting());
}

TEST_F(ZPKConditionsTest, LocalizedNameOfTheOtherCounts) {
    const RunningCopy other(m_folder / "Other.app", "Whatever", TestBundle::name());
    EXPECT_TRUE(m_door.isAlreadyExecuting());
}

TEST_F(ZPKConditionsTest, TopLevelStringsFileNamesThisOne) {
    writeFile(m_bundle.resource("InfoPlist.strings"),
              "CFBundleName = \"Einrichtung für Grün" + std::to_string(getpid()) + "\";");
    const RunningCopy identifier(m_folder / "A.app", TestBundle::name());
    EXPECT_FALSE(m_door.isAlreadyExecuting());
    const RunningCopy same(m_folder / "B.app", "Einrichtung für Grün" + std::to_string(getpid()));
    EXPECT_TRUE(m_door.isAlreadyExecuting());
}

TEST_F(ZPKConditionsTest, StringsFileWithoutNameFallsBackToTheIdentifier) {
    writeFile(m_bundle.resource("InfoPlist.strings"), "Other = \"x\";");
    const RunningCopy other(m_folder / "A.app", TestBundle::name());
    EXPECT_TRUE(m_door.isAlreadyExecuting());
}

TEST_F(ZPKConditionsTest, IdentifierWithoutADotNamesNothing) {
    writeFile(m_bundle.path() + "/Contents/Info.plist", "<plist><dict><key>CFBundleIdentifier</key><string>" +
                                                            TestBundle::name() + "</string></dict></plist>");
    const RunningCopy other(m_folder / "A.app", TestBundle::name());
    EXPECT_FALSE(m_door.isAlreadyExecuting());
}

}  // namespace
