// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "InstallerCore/ZPKStagingFolder.h"

#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <optional>

#include "Package/ZPKArchiveTool.h"
#include "Tests/InstallerCore/ZPKCoreFixture.h"
#include "Tests/Platform/OtherUser.h"
#include "Tests/Support/FewDescriptors.h"

namespace fs = std::filesystem;
using zpk_test::FewDescriptors;
using zpk_test::writeFile;

namespace {

class ZPKStagingFolderTest : public zpk_test::ZPKCoreFixture {
protected:
    mode_t modeOf(const std::string& path) const {
        struct stat attributes {};
        EXPECT_EQ(::lstat(path.c_str(), &attributes), 0) << path;
        return attributes.st_mode & 07777;
    }

    std::string reason() const {
        const auto folder = ZPKStagingFolder::make();
        return folder ? "made" : folder.failure().reason();
    }

    ZPKArchiveTool m_tool;
};

TEST_F(ZPKStagingFolderTest, IsMadeAfreshAndGoesWithItsOwner) {
    writeFile(m_staging + "/Data/old", "left");
    {
        auto folder = ZPKStagingFolder::make();
        ASSERT_TRUE(folder);
        EXPECT_EQ((*folder)->path(), m_staging);
        EXPECT_TRUE(fs::is_empty(m_staging));
        writeFile(m_staging + "/Data/new", "x");
    }
    EXPECT_TRUE(fs::is_empty(m_temporary));
}

TEST_F(ZPKStagingFolderTest, MovedAwayIsEmptiedAndWhatStandsInItsPlaceStays) {
    {
        const auto folder = ZPKStagingFolder::make();
        ASSERT_TRUE(folder);
        writeFile(m_staging + "/Data/own", "x");
        fs::rename(m_staging, m_folder / "moved");
        writeFile(m_staging + "/Data/planted", "x");
    }
    EXPECT_TRUE(fs::is_empty(m_folder / "moved"));
    EXPECT_TRUE(fs::exists(m_staging + "/Data/planted"));
}

TEST_F(ZPKStagingFolderTest, GoesWithAllThatItHoldsWhereNoDescriptorIsLeft) {
    auto folder = ZPKStagingFolder::make();
    ASSERT_TRUE(folder);
    writeFile(m_staging + "/Data/a/b/c/d/e/file", "x");
    std::optional<FewDescriptors> none(0);
    folder->reset();
    none.reset();
    EXPECT_TRUE(fs::is_empty(m_temporary));
}

TEST_F(ZPKStagingFolderTest, TakesAsManyDescriptorsAsItsRemoval) {
    const auto descriptors = [] { return std::distance(fs::directory_iterator("/proc/self/fd"), {}); };
    const auto before = descriptors();
    const auto folder = ZPKStagingFolder::make();
    ASSERT_TRUE(folder);
    EXPECT_EQ(descriptors(), before + 3);
}

TEST_F(ZPKStagingFolderTest, InThePlaceOfAnEarlierRunsTakesNoMoreDescriptors) {
    const auto isMadeWith = [this](std::size_t free) {
        const FewDescriptors few(free);
        return reason() == "made";
    };
    std::size_t enough = 0;
    while (!isMadeWith(enough)) {
        ASSERT_LT(++enough, 10U);
    }
    writeFile(m_staging + "/Data/a/b/c/d/e/file", "left");
    EXPECT_TRUE(isMadeWith(enough)) << enough;
    EXPECT_TRUE(fs::is_empty(m_temporary));
}

TEST_F(ZPKStagingFolderTest, IsItsOwnersAloneWhateverTheUmask) {
    for (const mode_t mask : {0000U, 0022U, 0077U, 0277U}) {
        const mode_t before = ::umask(mask);
        {
            const auto folder = ZPKStagingFolder::make();
            EXPECT_TRUE(folder) << mask;
            EXPECT_EQ(modeOf(m_staging), 0700u) << mask;
        }
        ::umask(before);
    }
}

TEST_F(ZPKStagingFolderTest, LinkInItsPlaceIsReplacedAndItsTargetKept) {
    writeFile(m_folder / "outside/kept", "kept");
    fs::create_symlink(m_folder / "outside", m_staging);
    const auto folder = ZPKStagingFolder::make();
    EXPECT_TRUE(folder);
    EXPECT_FALSE(fs::is_symlink(m_staging));
    EXPECT_TRUE(fs::exists(m_folder / "outside/kept"));
}

TEST_F(ZPKStagingFolderTest, WithoutAFolderForTemporaryFilesThereIsNone) {
    fs::permissions(m_temporary, fs::perms::all | fs::perms::sticky_bit);
    const zpk_test::ScopedEnvironment noCache("XDG_CACHE_HOME", "/dev/null");
    fs::create_symlink(m_folder.path(), m_temporary + "/com.varno.zephyrkit-" + std::to_string(::geteuid()));
    EXPECT_EQ(reason(), "No safe folder for temporary files from which programs may run");
}

TEST_F(ZPKStagingFolderTest, FolderOfAnotherOwnerThatStaysIsNotTaken) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "takes root to make another owner's folder";
    }
    // As a run as root leaves it in the person's own temporary folder.
    writeFile(m_staging + "/Data/setup", "root's");
    for (const std::string& path : {m_folder.path(), m_temporary}) {
        zpk_test::giveToUserWithoutPrivileges(path);
    }
    EXPECT_TRUE(zpk_test::answerWithoutPrivileges([this] { return reason() != "made"; }));
    EXPECT_TRUE(fs::exists(m_staging + "/Data/setup"));
}

TEST_F(ZPKStagingFolderTest, FolderOfAnotherOwnerThatIsEmptyGivesWay) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "takes root to make another owner's folder";
    }
    fs::create_directory(m_staging);
    for (const std::string& path : {m_folder.path(), m_temporary}) {
        zpk_test::giveToUserWithoutPrivileges(path);
    }
    EXPECT_TRUE(zpk_test::answerWithoutPrivileges([this] {
        const auto folder = ZPKStagingFolder::make();
        struct stat attributes {};
        return folder && ::lstat(m_staging.c_str(), &attributes) == 0 && attributes.st_uid == ::geteuid();
    }));
}

TEST_F(ZPKStagingFolderTest, OwnFolderThatCannotBeRemovedIsNotTaken) {
    fs::create_directory(m_staging);
    fs::permissions(m_staging, fs::perms::owner_all);
    for (const std::string& path : {m_folder.path(), m_temporary, m_staging}) {
        zpk_test::giveToUserWithoutPrivileges(path);
    }
    fs::permissions(m_temporary, fs::perms::owner_read | fs::perms::owner_exec);
    EXPECT_TRUE(zpk_test::answerWithoutPrivileges([this] { return reason() == "Permission denied"; }));
    fs::permissions(m_temporary, fs::perms::owner_all);
}

TEST_F(ZPKStagingFolderTest, FolderThatCannotBeMadeIsTold) {
    for (const std::string& path : {m_folder.path(), m_temporary}) {
        zpk_test::giveToUserWithoutPrivileges(path);
    }
    fs::permissions(m_temporary, fs::perms::owner_read | fs::perms::owner_exec);
    EXPECT_TRUE(zpk_test::answerWithoutPrivileges([this] { return reason() == "Permission denied"; }));
    fs::permissions(m_temporary, fs::perms::owner_all);
}

TEST_F(ZPKStagingFolderTest, MountPointIsNotTaken) {
    fs::create_directory(m_staging);
    if (::mount("none", m_staging.c_str(), "tmpfs", 0, nullptr) != 0) {
        GTEST_SKIP() << "takes the right to mount";
    }
    EXPECT_EQ(reason(), "Device or resource busy");
    ::umount(m_staging.c_str());
}

TEST_F(ZPKStagingFolderTest, DescriptionIsUnpackedAndItsArchiveDeleted) {
    addStartup("Exec='x'");
    pack();
    const auto folder = ZPKStagingFolder::make();
    ASSERT_TRUE(folder);
    EXPECT_TRUE((*folder)->unpackDescription(m_bundle.resource(""), m_tool));
    EXPECT_TRUE(fs::exists(m_staging + "/Info/Startup.xml"));
    EXPECT_FALSE(fs::exists(m_staging + "/Info.dat"));
}

TEST_F(ZPKStagingFolderTest, DescriptionIsNotUnpackedIntoWhatStandsInItsPlace) {
    addStartup("Exec='x'");
    pack();
    const auto folder = ZPKStagingFolder::make();
    ASSERT_TRUE(folder);
    fs::rename(m_staging, m_folder / "moved");
    writeFile(m_staging + "/Info.dat", "planted");
    const ZPKOutcome outcome = (*folder)->unpackDescription(m_bundle.resource(""), m_tool);
    ASSERT_FALSE(outcome);
    EXPECT_EQ(outcome.failure().message(), m_staging + ": Is no longer in its place");
    EXPECT_EQ(zpk_test::readFile(m_staging + "/Info.dat"), "planted");
    EXPECT_TRUE(fs::is_empty(m_folder / "moved")) << "the archive went all the same";
}

TEST_F(ZPKStagingFolderTest, DescriptionThatCannotBeUnpackedIsTheToolsFailure) {
    writeFile(m_bundle.resource("Info.datx"), "no archive");
    const auto folder = ZPKStagingFolder::make();
    ASSERT_TRUE(folder);
    const ZPKOutcome outcome = (*folder)->unpackDescription(m_bundle.resource(""), m_tool);
    ASSERT_FALSE(outcome);
    EXPECT_EQ(outcome.failure().message(), m_bundle.path() + "/Contents/Helpers/ditto: Ended with status 1");
    EXPECT_TRUE(fs::is_empty(m_staging));
}

}  // namespace
