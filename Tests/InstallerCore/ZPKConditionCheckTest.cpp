// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "InstallerCore/ZPKConditionCheck.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "Platform/ZPKHeldFolder.h"
#include "Tests/InstallerCore/ConditionsFixture.h"
#include "Tests/Platform/OtherUser.h"

namespace fs = std::filesystem;
using zpk_test::kProducts;
using zpk_test::readFile;
using zpk_test::writeFile;

namespace {

class ZPKConditionCheckTest : public zpk_test::ConditionsFixture {
protected:
    /// Writes a condition description and checks it.
    bool check(const std::string& contents) {
        const std::string path = m_folder / "Condition.xml";
        writeFile(path, contents);
        m_answer = ZPKConditionCheck::check(path, m_folder.path());
        return m_answer.isMet;
    }

    ZPKConditionAnswer m_answer;
};

TEST_F(ZPKConditionCheckTest, MissingDescriptionAllows) {
    EXPECT_TRUE(ZPKConditionCheck::check(m_folder / "none", m_folder.path()).isMet);
}

TEST_F(ZPKConditionCheckTest, MalformedDescriptionRefusesWithEmptyLists) {
    check(std::string("<U><Conditions><Disc FilePath='a'/></Conditions>") + kProducts + "</U>");
    EXPECT_FALSE(check("<UpdateInfo><Conditions>"));
    EXPECT_EQ(m_answer.products, Lines{});
    EXPECT_EQ(m_answer.discPaths, Lines{});
}

TEST_F(ZPKConditionCheckTest, EmptyDescriptionRefuses) {
    EXPECT_FALSE(check("<UpdateInfo/>"));
    EXPECT_FALSE(check("<UpdateInfo><Conditions/></UpdateInfo>"));
    EXPECT_EQ(m_answer.discPaths, Lines{});
}

TEST_F(ZPKConditionCheckTest, SignatureInTheListAllowsAndLeavesDiscsOut) {
    installSignature("sig.1");
    EXPECT_TRUE(
        check("<U><Conditions><Disc FilePath='a'/><UIMLog Signature='sig.0'/><UIMLog Signature='sig.1'/>"
              "</Conditions></U>"));
    EXPECT_EQ(m_answer.discPaths, Lines{});
}

TEST_F(ZPKConditionCheckTest, SignatureMustBeExact) {
    installSignature("sig.1");
    for (const char* signature : {"SIG.1", "sig.1 ", "sig", ""}) {
        EXPECT_FALSE(
            check("<U><Conditions><UIMLog Signature='" + std::string(signature) + "'/></Conditions></U>"))
            << signature;
    }
}

TEST_F(ZPKConditionCheckTest, ListInTextFormIsRead) {
    installSoftwareList("{ \"Varno Utilities\" = (other, \"sig.1\"); }");
    EXPECT_TRUE(check("<U><Conditions><UIMLog Signature='sig.1'/></Conditions></U>"));
    EXPECT_FALSE(check("<U><Conditions><UIMLog Signature='sig.2'/></Conditions></U>"));
}

TEST_F(ZPKConditionCheckTest, ListInBinaryFormIsRead) {
    installSignature("sig.1");
    const std::string path = m_library + "/Preferences/com.varno.ic_installer.plist";
    ASSERT_EQ(std::system(("plistutil -i '" + path + "' -o '" + path + ".bin'").c_str()), 0);
    fs::rename(path + ".bin", path);
    ASSERT_EQ(readFile(path).substr(0, 6), "bplist");
    EXPECT_TRUE(check("<U><Conditions><UIMLog Signature='sig.1'/></Conditions></U>"));
}

TEST_F(ZPKConditionCheckTest, ListThatCannotBeUsedCountsAsNotInstalled) {
    for (const char* list : {"", "<plist>", "<plist><array/></plist>", "<plist><dict/></plist>",
                             "<plist><dict><key>Varno Utilities</key><string>sig.1</string></dict></plist>",
                             "bplist00", "bplist00\xff\xff\xff\xff"}) {
        installSoftwareList(list);
        EXPECT_FALSE(check("<U><Conditions><UIMLog Signature='sig.1'/></Conditions></U>")) << list;
    }
}

TEST_F(ZPKConditionCheckTest, NoLibraryFolderCountsAsNotInstalled) {
    const zpk_test::ScopedEnvironment nowhere("XDG_DATA_DIRS", "relative");
    EXPECT_FALSE(check("<U><Conditions><UIMLog Signature='s'/><UninstallXml AppName='x'/></Conditions></U>"));
}

TEST_F(ZPKConditionCheckTest, UninstallDescriptionAllows) {
    installUninstallDescription("Tandem.xml");
    EXPECT_FALSE(check("<U><Conditions><UninstallXml AppName='tandem.xml'/></Conditions></U>"));
    EXPECT_TRUE(check("<U><Conditions><UninstallXml AppName='Tandem.xml'/></Conditions></U>"));
}

TEST_F(ZPKConditionCheckTest, EmptyAppNameAsksForTheUninstallFolder) {
    const char* conditions = "<U><Conditions><UninstallXml/></Conditions></U>";
    EXPECT_FALSE(check(conditions));
    installUninstallDescription("any");
    EXPECT_TRUE(check(conditions));
}

TEST_F(ZPKConditionCheckTest, OddAppNamesAreOnlyLookedUp) {
    installUninstallDescription("any");
    EXPECT_TRUE(check("<U><Conditions><UninstallXml AppName='../Uninstall/any'/></Conditions></U>"));
    EXPECT_FALSE(check("<U><Conditions><UninstallXml AppName='/etc/passwd'/></Conditions></U>"));
    EXPECT_FALSE(
        check("<U><Conditions><UninstallXml AppName='" + std::string(100000, 'x') + "'/></Conditions></U>"));
}

TEST_F(ZPKConditionCheckTest, RegistryNeverAllows) {
    EXPECT_FALSE(
        check(std::string("<U><Conditions><Registry KeyName='x'/></Conditions>") + kProducts + "</U>"));
    EXPECT_EQ(m_answer.discPaths, Lines{});
    EXPECT_EQ(m_answer.products, (Lines{"Tandem <b>", "Set"}));
}

TEST_F(ZPKConditionCheckTest, DiscsAreCollectedInOrder) {
    EXPECT_FALSE(
        check("<U><Conditions><Disc FilePath='b/*.bin'/><UIMLog Signature='s'/><Disc/><Disc FilePath='a'/>"
              "</Conditions></U>"));
    EXPECT_EQ(m_answer.discPaths, (Lines{"b/*.bin", "", "a"}));
}

TEST_F(ZPKConditionCheckTest, ThousandsOfEntries) {
    std::string entries;
    for (int index = 0; index < 20000; ++index) {
        entries += "<Disc FilePath='" + std::to_string(index) + "'/>";
    }
    EXPECT_FALSE(check("<U><Conditions>" + entries + "</Conditions></U>"));
    EXPECT_EQ(m_answer.discPaths.size(), 20000u);
}

/// A description that refuses, unpacked to `Info` or put in its place by a link.
class ZPKLinkedConditionTest : public zpk_test::ConditionsFixture {
protected:
    ZPKConditionAnswer check() const {
        return ZPKConditionCheck::check(m_folder / "staging/Info/Condition.xml", m_folder / "staging");
    }

    void writeConditions(const std::string& path) {
        writeFile(m_folder / path, std::string("<U>") + kProducts + "</U>");
    }

    void link(const std::string& target, const std::string& path) {
        fs::create_directories(fs::path(m_folder / path).parent_path());
        fs::create_symlink(target, m_folder / path);
    }
};

TEST_F(ZPKLinkedConditionTest, LinkToAnotherFolderOfTheStagingFolderIsReadThrough) {
    writeConditions("staging/Real/Condition.xml");
    link("Real", "staging/Info");
    const ZPKConditionAnswer answer = check();
    EXPECT_FALSE(answer.isMet);
    EXPECT_EQ(answer.products, (Lines{"Tandem <b>", "Set"}));
}

TEST_F(ZPKLinkedConditionTest, LinkToAnotherFileOfTheStagingFolderIsReadThrough) {
    writeConditions("staging/Info/real");
    link("real", "staging/Info/Condition.xml");
    EXPECT_EQ(check().products, (Lines{"Tandem <b>", "Set"}));
}

TEST_F(ZPKLinkedConditionTest, LinkThatComesBackIntoTheStagingFolderIsReadThrough) {
    writeConditions("staging/Real/sub/Condition.xml");
    fs::create_directory_symlink(m_folder / "staging", m_folder / "outside");
    const std::string targets[] = {
        "./Real//sub/",
        "Real/sub/../../Real/sub",
        "../staging/Real/sub",
        m_folder / "staging/Real/sub",
        m_folder / "outside/Real/sub",
        "../outside/Real/sub",
    };
    for (const std::string& target : targets) {
        link(target, "staging/Info");
        EXPECT_EQ(check().products, (Lines{"Tandem <b>", "Set"})) << target;
        fs::remove(m_folder / "staging/Info");
    }
}

TEST_F(ZPKLinkedConditionTest, LinksInARowAreReadThroughAsFarAsTheKernelFollows) {
    writeConditions("staging/0/Condition.xml");
    for (int number = 1; number < 40; ++number) {
        link(std::to_string(number - 1), "staging/" + std::to_string(number));
    }
    link("39", "staging/Info");
    EXPECT_EQ(check().products, (Lines{"Tandem <b>", "Set"}));
    fs::remove(m_folder / "staging/Info");
    link("39", "staging/40");
    link("40", "staging/Info");
    EXPECT_FALSE(check().isMet);
    EXPECT_EQ(check().products, Lines{});
}

TEST_F(ZPKLinkedConditionTest, OfAMovedStagingFolderIsTheFoldersOwn) {
    writeConditions("staging/Real/Condition.xml");
    const std::string staging = m_folder / "staging";
    const ZPKHeldFolder held(staging, ZPKFileDescriptor(::open(staging.c_str(), O_PATH | O_DIRECTORY)));
    fs::rename(staging, m_folder / "moved");
    for (const std::string& target : {std::string("Real"), staging + "/Real"}) {
        link(target, "moved/Info");
        EXPECT_EQ(check().products, (Lines{"Tandem <b>", "Set"})) << "nothing is in its place: " << target;
        writeFile(staging + "/Real/Condition.xml", "planted");
        fs::create_directory(staging + "/Info");
        EXPECT_EQ(check().products, (Lines{"Tandem <b>", "Set"})) << target;
        fs::remove_all(staging);
        fs::remove(m_folder / "moved/Info");
    }
    writeConditions("staging/Info/Condition.xml");
    EXPECT_TRUE(check().isMet) << "the description is another's";
}

TEST_F(ZPKLinkedConditionTest, LinkOutOfTheStagingFolderRefusesAndIsNotRead) {
    writeConditions("outside/Condition.xml");
    fs::create_directories(m_folder / "empty");
    for (const char* const target : {"outside", "empty"}) {
        link(m_folder / target, "staging/Info");
        const ZPKConditionAnswer answer = check();
        EXPECT_FALSE(answer.isMet) << target;
        EXPECT_EQ(answer.products, Lines{}) << target;
        fs::remove(m_folder / "staging/Info");
    }
    link("../../outside/Condition.xml", "staging/Info/Condition.xml");
    EXPECT_FALSE(check().isMet);
    EXPECT_EQ(check().products, Lines{});
}

TEST_F(ZPKLinkedConditionTest, LinkThatLeadsNowhereRefuses) {
    link("nowhere", "staging/Info");
    EXPECT_FALSE(check().isMet);
    fs::remove(m_folder / "staging/Info");
    link("Info", "staging/Info");
    EXPECT_FALSE(check().isMet) << "to itself";
    fs::remove(m_folder / "staging/Info");
    link("nowhere", "staging/Info/Condition.xml");
    EXPECT_FALSE(check().isMet);
}

TEST_F(ZPKLinkedConditionTest, WithoutADescriptionNothingIsAskedFor) {
    EXPECT_TRUE(check().isMet) << "no staging folder";
    fs::create_directories(m_folder / "staging");
    EXPECT_TRUE(check().isMet) << "no Info";
    fs::create_directories(m_folder / "staging/Real");
    link("Real", "staging/Info");
    EXPECT_TRUE(check().isMet) << "Info is a link to an empty folder of the package's";
    fs::remove(m_folder / "staging/Info");
    writeFile(m_folder / "staging/Info", "a file");
    EXPECT_TRUE(check().isMet) << "Info is a file";
}

TEST_F(ZPKLinkedConditionTest, DescriptionThatIsNoFileRefuses) {
    fs::create_directories(m_folder / "staging/Info/Condition.xml");
    EXPECT_FALSE(check().isMet);
}

TEST_F(ZPKLinkedConditionTest, FolderThatMayNotBeLookedIntoRefuses) {
    writeConditions("staging/Info/Condition.xml");
    fs::permissions(m_folder / "staging/Info", fs::perms::none);
    fs::permissions(m_folder.path(), fs::perms::all);
    for (const char* const path : {"", "staging"}) {
        zpk_test::giveToUserWithoutPrivileges(m_folder / path);
    }
    EXPECT_TRUE(zpk_test::answerWithoutPrivileges([this] { return !check().isMet; }));
    fs::permissions(m_folder / "staging/Info", fs::perms::owner_all);
}

}  // namespace
