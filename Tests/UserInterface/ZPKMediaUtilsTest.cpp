// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/ZPKMediaUtils.h"

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <umockdev.h>
#include <unistd.h>

#include <filesystem>

#include "Tests/Support/TemporaryFolder.h"

namespace {

using Names = std::vector<std::string>;

/// Drives that are made up, and volumes that are mounted for real under the drives' names.
class ZPKMediaUtilsTest : public ::testing::Test {
protected:
    void SetUp() override {
        if (geteuid() != 0) {
            GTEST_SKIP() << "mounting takes root";
        }
        // A mount table of its own, so that nothing is left on the machine.
        if (unshare(CLONE_NEWNS) != 0 || mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) {
            GTEST_SKIP() << "no mount namespace can be had here";
        }
        m_machine = umockdev_testbed_new();
    }
    void TearDown() override {
        for (const std::string& volume : m_mounted) {
            umount(volume.c_str());
        }
        g_clear_object(&m_machine);
    }

    void addDrive(const std::string& name, const std::string& minor, const Names& media,
                  const char* removable = "1") {
        Names properties{"DEVNAME", "/dev/" + name, "DEVTYPE", "disk",     "MAJOR",
                         "11",      "MINOR",        minor,     "ID_CDROM", "1"};
        for (const std::string& mark : media) {
            properties.insert(properties.end(), {mark, "1"});
        }
        Names attributes{"dev", "11:" + minor, "removable", removable};
        g_autofree gchar* path =
            umockdev_testbed_add_devicev(m_machine, "block", ("made-up/block/" + name).c_str(), nullptr,
                                         texts(attributes).data(), texts(properties).data());
        ASSERT_NE(path, nullptr);
    }

    /// A volume whose device is called /dev/`name` in the mount table.
    std::string mountVolume(const std::string& name) {
        const std::string volume = m_folder / ("volume of " + name);
        std::filesystem::create_directory(volume);
        EXPECT_EQ(mount(("/dev/" + name).c_str(), volume.c_str(), "tmpfs", 0, "size=64k"), 0);
        m_mounted.push_back(volume);
        return volume;
    }

private:
    static std::vector<gchar*> texts(Names& strings) {
        std::vector<gchar*> pointers;
        for (std::string& string : strings) {
            pointers.push_back(string.data());
        }
        pointers.push_back(nullptr);
        return pointers;
    }

    zpk_test::TemporaryFolder m_folder;
    UMockdevTestbed* m_machine = nullptr;
    Names m_mounted;
};

const Names kCompactDisc{"ID_CDROM_MEDIA", "ID_CDROM_MEDIA_CD"};
const Names kRecordable{"ID_CDROM_MEDIA", "ID_CDROM_MEDIA_CD_R"};
const Names kRewritable{"ID_CDROM_MEDIA", "ID_CDROM_MEDIA_CD_RW"};
const Names kDvd{"ID_CDROM_MEDIA", "ID_CDROM_MEDIA_DVD"};

TEST_F(ZPKMediaUtilsTest, NameIsTheLastComponentOfTheMountedDevice) {
    EXPECT_EQ(ZPKMediaUtils::bsdNameAtPath(mountVolume("sr0")), "sr0");
    EXPECT_EQ(ZPKMediaUtils::bsdNameAtPath(mountVolume("mapper_x")), "mapper_x");
    EXPECT_EQ(ZPKMediaUtils::bsdNameAtPath("/no/such/volume"), std::nullopt);
}

TEST_F(ZPKMediaUtilsTest, CDROMAndCDRCountWhateverTheDriveSays) {
    addDrive("sr0", "0", kCompactDisc, "0");
    addDrive("sr1", "1", kRecordable, "0");
    addDrive("sr2", "2", kRewritable, "0");
    EXPECT_TRUE(ZPKMediaUtils::isCDMediaAtPath(mountVolume("sr0")));
    EXPECT_TRUE(ZPKMediaUtils::isCDMediaAtPath(mountVolume("sr1")));
    EXPECT_FALSE(ZPKMediaUtils::isCDMediaAtPath(mountVolume("sr2")));
}

TEST_F(ZPKMediaUtilsTest, OtherCDsCountWhenTheyCanBeEjected) {
    addDrive("sr2", "2", kRewritable);
    addDrive("sr3", "3", kDvd);
    EXPECT_EQ(ZPKMediaUtils::CDDevices(), Names{"sr2"});
    EXPECT_TRUE(ZPKMediaUtils::isCDMediaAtPath(mountVolume("sr2")));
    EXPECT_FALSE(ZPKMediaUtils::isCDMediaAtPath(mountVolume("sr3")));
}

TEST_F(ZPKMediaUtilsTest, BeginningOfTheNameSuffices) {
    addDrive("sr1", "1", kRewritable);
    EXPECT_TRUE(ZPKMediaUtils::isCDMediaAtPath(mountVolume("sr10")));
    EXPECT_TRUE(ZPKMediaUtils::isCDMediaAtPath(mountVolume("sr1p1")));
    EXPECT_FALSE(ZPKMediaUtils::isCDMediaAtPath(mountVolume("sr")));
    EXPECT_FALSE(ZPKMediaUtils::isCDMediaAtPath(mountVolume("xsr1")));
}

TEST_F(ZPKMediaUtilsTest, NothingMountedThereIsNoDisc) {
    addDrive("sr0", "0", kCompactDisc);
    EXPECT_FALSE(ZPKMediaUtils::isCDMediaAtPath("/no/such/volume"));
    EXPECT_FALSE(ZPKMediaUtils::isCDMediaAtPath("/"));
}

}  // namespace
