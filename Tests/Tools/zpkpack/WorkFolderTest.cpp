// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/WorkFolder.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <filesystem>

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

}  // namespace

}  // namespace zpk_test
