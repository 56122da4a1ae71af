// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/WorkFolder.h"

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <string>

#include "Base/ZPKReplacementFile.h"
#include "Tests/Tools/zpkpack/PackagerFixture.h"

namespace fs = std::filesystem;

using zpk_packager::WorkFolder;

namespace zpk_test {

namespace {

class WorkFolderTest : public PackagerFixture {};

TEST_F(WorkFolderTest, LiesBesideTheOutputAndIsItsOwnersAlone) {
    const mode_t before = ::umask(0277);
    const WorkFolder folder = WorkFolder::beside(m_folder / "Out.app");
    ::umask(before);
    EXPECT_EQ(fs::path(folder.path()).parent_path(), m_folder.path());
    EXPECT_EQ(fs::status(folder.path()).permissions(), fs::perms(0700));
}

TEST_F(WorkFolderTest, GoesWithAllThatIsInIt) {
    std::string path;
    {
        const WorkFolder folder = WorkFolder::beside(m_folder / "Out.app");
        path = folder.path();
        writeFile(path + "/bundle.app/closed/file", "");
        fs::permissions(path + "/bundle.app/closed", fs::perms(0));
    }
    EXPECT_FALSE(fs::exists(path));
}

TEST_F(WorkFolderTest, TakesAnotherNameWhereTheFirstOnesAreTaken) {
    const std::string first = ZPKReplacementFile::temporaryPathBeside(m_folder / "Out.app", 0);
    const std::string second = ZPKReplacementFile::temporaryPathBeside(m_folder / "Out.app", 1);
    writeFile(first + "/left", "");
    fs::create_symlink("nowhere", second);
    {
        const WorkFolder folder = WorkFolder::beside(m_folder / "Out.app");
        EXPECT_EQ(folder.path(), ZPKReplacementFile::temporaryPathBeside(m_folder / "Out.app", 2));
    }
    EXPECT_TRUE(fs::exists(first + "/left"));
    EXPECT_TRUE(fs::is_symlink(second));
}

TEST_F(WorkFolderTest, RemovesWhatAKilledProcessHasLeftAndNothingElse) {
    const auto make = [&](const std::string& name, int mode) {
        writeFile(m_folder / name + "/left", "");
        fs::permissions(m_folder / name, fs::perms(mode));
        return fs::path(m_folder / name);
    };
    const fs::path abandoned = make(".zpk-1-0", 0700);
    const fs::path open = make(".zpk-1-1", 0750);
    const fs::path other = make(".zpk-one", 0700);
    writeFile(m_folder / ".zpk-1-2", "a file");
    fs::create_symlink(other, m_folder / ".zpk-1-3");
    const WorkFolder inUse = WorkFolder::beside(m_folder / "Out.app");
    const WorkFolder next = WorkFolder::beside(m_folder / "Next.app");
    EXPECT_FALSE(fs::exists(abandoned));
    for (const fs::path& kept :
         {open, other, fs::path(m_folder / ".zpk-1-2"), fs::path(m_folder / ".zpk-1-3"),
          fs::path(inUse.path()), fs::path(next.path())}) {
        EXPECT_TRUE(fs::exists(kept)) << kept;
    }
    EXPECT_TRUE(fs::exists(other / "left"));
}

TEST_F(WorkFolderTest, AChildKeepsTheFolderForItself) {
    int hold[2];
    ASSERT_EQ(::pipe(hold), 0);
    const pid_t owner = ::fork();
    ASSERT_GE(owner, 0);
    if (owner == 0) {
        // Ends as if it was killed, while its own child goes on until the pipe is closed.
        const WorkFolder folder = WorkFolder::beside(m_folder / "Out.app");
        ::close(hold[1]);
        char byte = 0;
        ::_exit(::fork() == 0 ? static_cast<int>(::read(hold[0], &byte, 1)) : 0);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(owner, &status, 0), owner);
    const std::string left = m_folder / (".zpk-" + std::to_string(owner) + "-0");
    ASSERT_TRUE(fs::exists(left));
    const auto staysAfterAnother = [&] {
        { const WorkFolder another = WorkFolder::beside(m_folder / "Next.app"); }
        return fs::exists(left);
    };
    EXPECT_TRUE(staysAfterAnother());
    ::close(hold[1]);
    ::close(hold[0]);
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (staysAfterAnother() && std::chrono::steady_clock::now() < end) {
    }
    EXPECT_FALSE(fs::exists(left));
}

}  // namespace

}  // namespace zpk_test
