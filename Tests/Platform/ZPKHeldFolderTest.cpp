// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Platform/ZPKHeldFolder.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "Platform/ZPKFileHandle.h"
#include "Platform/ZPKFileManager.h"
#include "Platform/ZPKTask.h"
#include "Tests/Platform/OtherUser.h"
#include "Tests/Support/FewDescriptors.h"
#include "Tests/Support/TemporaryFolder.h"

namespace fs = std::filesystem;
using zpk_test::readFile;
using zpk_test::writeFile;

namespace {

class ZPKHeldFolderTest : public ::testing::Test {
protected:
    ZPKHeldFolderTest() {
        fs::create_directory(m_path);
        hold();
    }

    void hold() { m_held.emplace(m_path, ZPKFileDescriptor(::open(m_path.c_str(), O_PATH | O_DIRECTORY))); }

    /// Somebody moves the folder away.
    void move() { fs::rename(m_path, m_moved); }

    zpk_test::TemporaryFolder m_folder;
    std::string m_path = m_folder / "held";
    std::string m_moved = m_folder / "moved";
    std::optional<ZPKHeldFolder> m_held;
};

TEST_F(ZPKHeldFolderTest, NamesAreBelowTheFolderWherePathsAre) {
    const struct {
        std::string path;
        std::string name;
    } rows[] = {
        {m_path, "."},          {m_path + "//", "."},       {m_path + "/a", "a"}, {m_path + "//a/b", "a/b"},
        {m_path + "/a/", "a/"}, {m_path + "/../a", "../a"},
    };
    for (const auto& row : rows) {
        const ZPKHeldFolder::Place place = ZPKHeldFolder::placeOf(row.path);
        EXPECT_EQ(place.folder, m_held->descriptor()) << row.path;
        EXPECT_EQ(place.name, row.name) << row.path;
    }
}

TEST_F(ZPKHeldFolderTest, OtherPathsStayAsTheyAre) {
    const std::vector<std::string> others = {
        "", "a", "/", m_path + "x", m_path + "x/a", m_folder.path(), m_path.substr(0, m_path.size() - 1)};
    for (const std::string& path : others) {
        const ZPKHeldFolder::Place place = ZPKHeldFolder::placeOf(path);
        EXPECT_EQ(place.folder, AT_FDCWD) << path;
        EXPECT_EQ(place.name, path);
    }
    m_held.reset();
    const std::string below = m_path + "/a";
    EXPECT_EQ(ZPKHeldFolder::placeOf(below).folder, AT_FDCWD);
    EXPECT_EQ(ZPKHeldFolder::at(m_path), nullptr);
}

TEST_F(ZPKHeldFolderTest, IsFoundAtItsPathUntilItIsMoved) {
    EXPECT_EQ(ZPKHeldFolder::at(m_path + "/"), &*m_held);
    EXPECT_EQ(ZPKHeldFolder::at(m_path + "/a"), nullptr);
    EXPECT_TRUE(ZPKHeldFolder::isToBeFoundAt(m_path + "/a"));
    move();
    EXPECT_FALSE(ZPKHeldFolder::isToBeFoundAt(m_path)) << "nothing is there";
    EXPECT_TRUE(ZPKHeldFolder::isToBeFoundAt(m_moved)) << "not by this path";
    fs::create_directory_symlink(m_moved, m_path);
    EXPECT_FALSE(ZPKHeldFolder::isToBeFoundAt(m_path + "/a")) << "a link to it is not the folder";
    fs::remove(m_path);
    fs::create_directory(m_path);
    EXPECT_FALSE(ZPKHeldFolder::isToBeFoundAt(m_path + "/a")) << "another folder";
}

TEST_F(ZPKHeldFolderTest, FilesAreWrittenIntoTheFolderAndNotIntoItsPlace) {
    writeFile(m_path + "/old", "own");
    move();
    writeFile(m_path + "/old", "planted");
    writeFile(m_path + "/source", "planted");
    EXPECT_EQ(*ZPKFileHandle::forReadingAtPath(m_path + "/old")->contents(100), "own");
    EXPECT_TRUE(ZPKFileHandle::emptyingFileAtPath(m_path + "/old"));
    EXPECT_EQ(readFile(m_moved + "/old"), "");
    EXPECT_TRUE(ZPKFileHandle::replacingFileAtPath(m_path + "/new"));
    EXPECT_TRUE(fs::exists(m_moved + "/new"));
    writeFile(m_folder / "outside", "copied");
    EXPECT_TRUE(ZPKFileManager::copyItem(m_folder / "outside", m_path + "/copy"));
    EXPECT_EQ(readFile(m_moved + "/copy"), "copied");
    EXPECT_TRUE(ZPKFileManager::removeItem(m_path + "/old"));
    EXPECT_FALSE(fs::exists(m_moved + "/old"));
    EXPECT_EQ(readFile(m_path + "/old"), "planted");
    EXPECT_EQ(std::distance(fs::directory_iterator(m_path), {}), 2) << "nothing was made there";
}

TEST_F(ZPKHeldFolderTest, QuestionsAreAskedOfTheFolderAndNotOfItsPlace) {
    writeFile(m_path + "/sub/program", "own");
    fs::permissions(m_path + "/sub/program", fs::perms::owner_all);
    move();
    fs::create_directory(m_path);
    EXPECT_TRUE(ZPKFileManager::fileExists(m_path + "/sub/program"));
    EXPECT_TRUE(ZPKFileManager::isFolder(m_path + "/sub"));
    EXPECT_TRUE(ZPKFileManager::isFolderNotFollowingLinks(m_path + "/sub"));
    EXPECT_TRUE(ZPKFileManager::isExecutableRegularFile(m_path + "/sub/program"));
    EXPECT_FALSE(ZPKFileManager::isOnFileSystemWithoutExecution(m_path + "/sub/program"));
    std::vector<std::string> names;
    EXPECT_TRUE(ZPKFileManager::contentsOfFolder(m_path, names));
    EXPECT_EQ(names, std::vector<std::string>{"sub"});
    EXPECT_TRUE(ZPKFileManager::contentsOfFolder(m_path + "/sub", names));
    EXPECT_EQ(names, std::vector<std::string>{"program"});
    writeFile(m_path + "/planted", "x");
    EXPECT_FALSE(ZPKFileManager::fileExists(m_path + "/planted"));
}

TEST_F(ZPKHeldFolderTest, NothingIsStartedByAPathThatLeadsElsewhere) {
    const std::string program = m_path + "/program";
    writeFile(program, "#!/bin/sh\nexit 3\n");
    fs::permissions(program, fs::perms::owner_all);
    ZPKTask task;
    task.setLaunchPath(program);
    EXPECT_TRUE(task.launch());
    task.waitUntilExit();
    EXPECT_EQ(task.terminationStatus(), 3);
    move();
    writeFile(program, "#!/bin/sh\n: > '" + (m_folder / "ran") + "'\n");
    fs::permissions(program, fs::perms::owner_all);
    const ZPKOutcome outcome = task.launch();
    task.waitUntilExit();
    ASSERT_FALSE(outcome);
    EXPECT_EQ(outcome.failure().message(), program + ": Its folder is no longer in its place");
    EXPECT_FALSE(fs::exists(m_folder / "ran"));
}

TEST_F(ZPKHeldFolderTest, GoesWithAllThatItHoldsAndTwoDescriptors) {
    writeFile(m_path + "/a/b/c/d/e/file", "x");
    {
        const zpk_test::FewDescriptors few(2);
        EXPECT_TRUE(ZPKFileManager::removeItem(m_path));
    }
    EXPECT_FALSE(fs::exists(m_path));
}

TEST_F(ZPKHeldFolderTest, EmptyGoesWithoutADescriptor) {
    const zpk_test::FewDescriptors none(0);
    EXPECT_TRUE(ZPKFileManager::removeItem(m_path));
    EXPECT_FALSE(fs::exists(m_path));
}

TEST_F(ZPKHeldFolderTest, MovedIsEmptiedAndWhatStandsInItsPlaceStays) {
    writeFile(m_folder / "outside/kept", "x");
    const auto plantings = {
        +[](const std::string&) {},
        +[](const std::string& path) { fs::create_directory(path); },
        +[](const std::string& path) { writeFile(path + "/kept", "x"); },
        +[](const std::string& path) { writeFile(path, "a file"); },
        +[](const std::string& path) { fs::create_directory_symlink("outside", path); },
        +[](const std::string& path) { fs::create_directory_symlink("moved", path); },
    };
    for (const auto& plant : plantings) {
        writeFile(m_path + "/a/file", "x");
        move();
        plant(m_path);
        const bool isPlanted = fs::exists(fs::symlink_status(m_path));
        const ZPKOutcome outcome = ZPKFileManager::removeItem(m_path);
        ASSERT_FALSE(outcome);
        EXPECT_EQ(outcome.failure().message(), m_path + ": Is no longer in its place");
        EXPECT_TRUE(fs::is_empty(m_moved));
        EXPECT_EQ(fs::exists(fs::symlink_status(m_path)), isPlanted);
        EXPECT_TRUE(!fs::is_directory(m_path) || fs::is_empty(m_path) || fs::exists(m_path + "/kept"));
        m_held.reset();
        fs::remove_all(m_path);
        fs::remove_all(m_moved);
        fs::create_directory(m_path);
        hold();
    }
    EXPECT_TRUE(fs::exists(m_folder / "outside/kept"));
}

TEST_F(ZPKHeldFolderTest, ClosedToItsOwnerGoesAllTheSame) {
    writeFile(m_path + "/sub/file", "x");
    for (const std::string& path : {m_folder.path(), m_path, m_path + "/sub"}) {
        zpk_test::giveToUserWithoutPrivileges(path);
    }
    for (const std::string& path : {m_path + "/sub", m_path}) {
        fs::permissions(path, fs::perms::none);
    }
    EXPECT_TRUE(zpk_test::answerWithoutPrivileges(
        [this] { return static_cast<bool>(ZPKFileManager::removeItem(m_path)); }));
    EXPECT_FALSE(fs::exists(m_path));
}

}  // namespace
