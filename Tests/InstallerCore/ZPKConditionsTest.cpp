// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <filesystem>

#include "Tests/InstallerCore/ConditionsFixture.h"

namespace fs = std::filesystem;
using zpk_test::kProducts;
using zpk_test::readFile;
using zpk_test::writeFile;

namespace {

// The sequence where the package has conditions.

class ZPKConditionsTest : public zpk_test::ConditionsFixture {};

TEST_F(ZPKConditionsTest, ASecondCheckStartsAfresh) {
    const std::string path = m_folder / "staging/Info/Condition.xml";
    writeFile(path, std::string("<U>") + kProducts + "</U>");
    EXPECT_FALSE(m_core.checkConditionXML(path));
    m_core.showSoftwareListDialog();
    fs::remove(path);
    EXPECT_TRUE(m_core.checkConditionXML(path));
    m_core.showSoftwareListDialog();
    writeFile(m_bundle.resource("UILang/en/ZPKStringTable.def"), "ZPKString_UPDATE_FAILURE = \"<%s>\";");
    m_core.awakeFromNib();
    m_core.showSoftwareListDialog();
    EXPECT_EQ(logged({"alert"}).back(), "alert 2: <>||ZPKString_OK");
}

TEST_F(ZPKConditionsTest, EachPlaceOfAProductIsAskedByItsName) {
    installSignature("sig.1");
    installUninstallDescription("Tandem.xml");
    EXPECT_TRUE(m_core.UIMLogExistAtSignature("sig.1"));
    EXPECT_FALSE(m_core.UIMLogExistAtSignature("sig.2"));
    EXPECT_TRUE(m_core.uninstallXMLExistAtName("Tandem.xml"));
    EXPECT_FALSE(m_core.uninstallXMLExistAtName("Other.xml"));
}

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

    /// Packs a description archive whose `Info` is a link, beside a folder `Real`.
    void packLinkedDescription(const std::string& target) {
        const std::string conditions = readFile(m_folder / "source/Info/Condition.xml");
        pack();
        m_bundle.packMembers(
            {{"Real", 040755, ""}, {"Real/Condition.xml", 0100644, conditions}, {"Info", 0120777, target}},
            "Info.datx");
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

TEST_F(ZPKDiscSequenceTest, ConditionsBehindALinkOfThePackageHoldAndAreDeletedThere) {
    packLinkedDescription("Real");
    bool isDeleted = false;
    m_frontEnd.onDiscWindow = [&](const auto& actions) {
        isDeleted = fs::exists(m_staging + "/Real") && !fs::exists(m_staging + "/Real/Condition.xml");
        actions.pushCancel();
    };
    m_frontEnd.run(m_core);
    EXPECT_TRUE(isDeleted);
    EXPECT_FALSE(setupHasRun());
    EXPECT_FALSE(fs::exists(m_staging));
}

TEST_F(ZPKDiscSequenceTest, ConditionsBehindALinkToTheOutsideRefuseAndNothingIsDeletedThere) {
    const std::string outside = m_folder / "outside";
    fs::create_directory(outside);
    fs::copy_file(m_folder / "source/Info/Condition.xml", outside + "/Condition.xml");
    packLinkedDescription(outside);
    m_frontEnd.run(m_core);
    EXPECT_EQ(logged({"alert", "disc", "progress"}),
              (Lines{"alert 2: ZPKString_UPDATE_FAILURE||ZPKString_OK"}));
    EXPECT_TRUE(fs::exists(outside + "/Condition.xml"));
    EXPECT_FALSE(setupHasRun());
}

}  // namespace
