// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Common/CFileManager.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "Common/CFileManagerLow.h"
#include "Tests/Common/AssertionReport.h"
#include "Tests/Support/TemporaryFolder.h"
#include "Tests/Support/VirtualSlot.h"

using varno_zpk::CAutoFinalizeObject;
using varno_zpk::CFileManager;
using zpk_test::assertionReport;
using zpk_test::TemporaryFolder;

namespace {

const char* const kSource = "Common/CFileManager.cpp";

}  // namespace

TEST(FileManagerTest, GetManagerMakesOneInstance) {
    CFileManager* manager = CFileManager::GetManager();
    ASSERT_NE(manager, nullptr);
    EXPECT_EQ(CFileManager::GetManager(), manager);
}

TEST(FileManagerTest, IsASingletonWithoutFieldsOrVirtualOperationsOfItsOwn) {
    EXPECT_TRUE((std::is_convertible_v<CFileManager*, CAutoFinalizeObject*>));
    EXPECT_FALSE(std::is_copy_constructible_v<CFileManager>);
    EXPECT_FALSE(std::is_copy_assignable_v<CFileManager>);
    EXPECT_EQ(sizeof(CFileManager), sizeof(CAutoFinalizeObject));
    EXPECT_EQ(zpk_test::virtualSlot(&CFileManager::AutoFinalizeObjectFinalize), 3u);
    EXPECT_TRUE((std::is_same_v<decltype(&CFileManager::AutoFinalizeObjectFinalize),
                                void (CAutoFinalizeObject::*)()>));
}

TEST(FileManagerTest, DestroyedManagerIsMadeAgain) {
    delete CFileManager::GetManager();
    EXPECT_TRUE(CFileManager::GetManager()->IsFolder("/"));
    // A second destruction finds the new manager registered.
    delete CFileManager::GetManager();
}

TEST(FileManagerTest, IsDestroyedByTheFinalizationOfAllSingletons) {
    EXPECT_DEATH(
        {
            CFileManager::GetManager();
            CAutoFinalizeObject::FinalizeAllObjects();
            // The old manager is gone, so a new one is tried, and it is too late for that.
            CFileManager::GetManager();
        },
        testing::MatchesRegex(assertionReport("Common/CAutoFinalizeObject.cpp",
                                              "varno_zpk::CAutoFinalizeObject::CAutoFinalizeObject()",
                                              "!s_AllObjectsFinalized")));
}

TEST(FileManagerTest, SecondManagerAborts) {
    EXPECT_DEATH(
        {
            CFileManager::GetManager();
            CFileManager second;
        },
        testing::MatchesRegex(
            assertionReport(kSource, "varno_zpk::CFileManager::CFileManager()", "s_Manager==NULL")));
}

TEST(FileManagerTest, DestructionOfAManagerThatIsNotTheSingleOneAborts) {
    EXPECT_DEATH({ CFileManager unregistered; },
                 testing::MatchesRegex(assertionReport(
                     kSource, "virtual varno_zpk::CFileManager::~CFileManager()", "s_Manager==this")));
}

TEST(FileManagerTest, ForwardsToTheLowerLayer) {
    const TemporaryFolder folder;
    zpk_test::writeFile(folder / "sub/file", "");
    CFileManager* manager = CFileManager::GetManager();

    std::string path;
    EXPECT_TRUE(manager->GetPublicDocumentFolderPath(path));
    EXPECT_EQ(path, "/home/Shared");

    manager->ConvertRelToAbsPath("/a/../b/", path);
    EXPECT_EQ(path, "/b");
    manager->ConvertRelToAbsPath("x", path);
    EXPECT_EQ(path, (std::filesystem::current_path() / "x").string());

    EXPECT_TRUE(manager->IsFolder((folder / "sub").c_str()));
    EXPECT_FALSE(manager->IsFolder((folder / "sub/file").c_str()));

    std::vector<std::string> names{"earlier"};
    manager->GetFolderContents(folder.path().c_str(), names);
    EXPECT_EQ(names, (std::vector<std::string>{"sub"}));
    manager->GetFolderContents((folder / "missing").c_str(), names);
    EXPECT_TRUE(names.empty());
}
