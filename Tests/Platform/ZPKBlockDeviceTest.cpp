// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Platform/ZPKBlockDevice.h"

#include <gtest/gtest.h>
#include <sys/sysmacros.h>

#include <filesystem>

#include "Tests/Platform/MadeUpDevices.h"
#include "Tests/Support/TemporaryFolder.h"

namespace {

using Properties = ZPKKernelDevice::Properties;
using zpk_test::MadeUpDevices;
using zpk_test::writeFile;

const std::string kDrive = "pci0000:00/ata1/host0/target0:0:0/0:0:0:0/block/sr0";
const std::string kStick = "pci0000:00/usb1/1-1/1-1:1.0/host2/target2:0:0/2:0:0:0/block/sdb";

/// Devices of a machine that the device manager has looked at.
class ZPKBlockDeviceTest : public ::testing::Test {
protected:
    void SetUp() override {
        if (!m_devices.missing().empty()) {
            GTEST_SKIP() << m_devices.missing();
        }
    }

    void addDrive() {
        m_devices.add(kDrive, "class/block", "11:0",
                      "MAJOR=11\nMINOR=0\nDEVNAME=sr0\nDEVTYPE=disk\nDISKSEQ=9\n");
        m_devices.setAttribute(kDrive, "removable", "1\n");
    }

    void addStick() {
        m_devices.add("pci0000:00/usb1/1-1", "bus/usb", "", "DEVTYPE=usb_device\nPRODUCT=781/5567/126\n");
        m_devices.setAttribute("pci0000:00/usb1/1-1", "removable", "removable\n");
        m_devices.add("pci0000:00/usb1/1-1/1-1:1.0", "bus/usb", "", "DEVTYPE=usb_interface\n");
        m_devices.add(kStick, "class/block", "8:16", "MAJOR=8\nMINOR=16\nDEVNAME=sdb\nDEVTYPE=disk\n");
        m_devices.setAttribute(kStick, "removable", "0\n");
        m_devices.add(kStick + "/sdb1", "class/block", "8:17",
                      "MAJOR=8\nMINOR=17\nDEVNAME=sdb1\nDEVTYPE=partition\nPARTN=1\n");
    }

    MadeUpDevices m_devices;
};

std::vector<std::string> namesOf(const std::vector<ZPKBlockDevice>& devices) {
    std::vector<std::string> names;
    for (const ZPKBlockDevice& device : devices) {
        names.push_back(device.name());
    }
    return names;
}

TEST_F(ZPKBlockDeviceTest, TheManagersRecordIsReadWithTheKernelsWords) {
    addDrive();
    m_devices.setRecord("11:0", "S:cdrom\nI:1234567\nE:ID_CDROM=1\nE:ID_CDROM_MEDIA=1\nG:systemd\nV:1\n");
    const auto device = ZPKBlockDevice::withName("sr0");
    ASSERT_TRUE(device);
    EXPECT_EQ(device->name(), "sr0");
    EXPECT_TRUE(device->isMarked("ID_CDROM"));
    EXPECT_TRUE(device->isMarked("ID_CDROM_MEDIA"));
    EXPECT_FALSE(device->isMarked("ID_CDROM_MEDIA_CD"));
    EXPECT_FALSE(device->isMarked("DISKSEQ")) << "its value is another";
    EXPECT_TRUE(device->hasRemovableMedium());
    EXPECT_FALSE(device->isPluggable());
}

TEST_F(ZPKBlockDeviceTest, TheManagersRecordOverridesTheKernelsWords) {
    addDrive();
    m_devices.setRecord("11:0", "E:DISKSEQ=1\n");
    EXPECT_TRUE(ZPKBlockDevice::withName("sr0")->isMarked("DISKSEQ"));
}

TEST_F(ZPKBlockDeviceTest, WithoutRecordTheKernelsWordsRemain) {
    addDrive();
    ASSERT_TRUE(ZPKBlockDevice::withName("sr0"));
    EXPECT_FALSE(ZPKBlockDevice::withName("sr0")->isMarked("ID_CDROM"));
    EXPECT_TRUE(ZPKBlockDevice::withName("sr0")->hasRemovableMedium());
}

TEST_F(ZPKBlockDeviceTest, PartitionsTakeAfterTheirDriveAndPort) {
    addStick();
    const auto partition = ZPKBlockDevice::ofMount({"/dev/sdb1", "/media/x", makedev(8, 17)});
    ASSERT_TRUE(partition);
    EXPECT_EQ(partition->name(), "sdb1");
    EXPECT_FALSE(partition->hasRemovableMedium());
    EXPECT_TRUE(partition->isPluggable());
    m_devices.setAttribute(kStick, "removable", "1\n");
    EXPECT_TRUE(partition->hasRemovableMedium()) << "asked for anew each time";
    m_devices.setAttribute("pci0000:00/usb1/1-1", "removable", "fixed\n");
    EXPECT_FALSE(partition->isPluggable());
}

TEST_F(ZPKBlockDeviceTest, DevicesOfAPropertyComeInTheOrderOfTheirPaths) {
    const char* const folders[] = {"b/block/sr0", "a/block/sr2", "a/block/sr1", "c/block/sda"};
    for (int index = 0; index < 4; ++index) {
        const std::string number = "11:" + std::to_string(index);
        m_devices.add(folders[index], "class/block", number, "DEVTYPE=disk\n");
        m_devices.setRecord(number, index == 3 ? "E:WANTED=10\n" : "E:WANTED=1\n");
    }
    EXPECT_EQ(namesOf(ZPKBlockDevice::withProperty("WANTED", "1")),
              (std::vector<std::string>{"sr1", "sr2", "sr0"}));
    EXPECT_EQ(namesOf(ZPKBlockDevice::withProperty("WANTED", "")), std::vector<std::string>{});
}

TEST_F(ZPKBlockDeviceTest, NamesWithASeparatorAreThoseOfDev) {
    m_devices.add("pci/block/cciss!c0d0", "class/block", "104:0", "DEVTYPE=disk\n");
    m_devices.setRecord("104:0", "E:WANTED=1\n");
    EXPECT_EQ(namesOf(ZPKBlockDevice::withProperty("WANTED", "1")), std::vector<std::string>{"cciss/c0d0"});
}

TEST_F(ZPKBlockDeviceTest, WhatIsNoDeviceIsPassedOver) {
    addDrive();
    std::filesystem::create_symlink("../../nowhere", "/sys/class/block/gone");
    std::filesystem::create_symlink("/", "/sys/class/block/root");
    std::filesystem::create_symlink("loop", "/sys/class/block/loop");
    writeFile("/sys/class/block/file", "x");
    std::filesystem::create_directories("/sys/devices/empty/block/sr9");
    std::filesystem::create_symlink("/sys/devices/empty/block/sr9", "/sys/class/block/sr9");
    m_devices.add("net/eth0", "class/net", "", "DEVTYPE=disk\n");
    std::filesystem::create_symlink("/sys/devices/net/eth0", "/sys/class/block/eth0");
    // Nothing outside the kernel's own folder is one, whatever it looks like.
    writeFile("/run/made-up/uevent", "DEVTYPE=disk\n");
    std::filesystem::create_symlink("/sys/class/block", "/run/made-up/subsystem");
    std::filesystem::create_symlink("/run/made-up", "/sys/class/block/outside");
    for (const char* const name :
         {"outside", "gone", "root", "loop", "file", "sr9", "eth0", "sr1", "\n", "sr0\n"}) {
        EXPECT_FALSE(ZPKBlockDevice::withName(name)) << name;
    }
    m_devices.setRecord("11:0", "E:WANTED=1\n");
    EXPECT_EQ(namesOf(ZPKBlockDevice::withProperty("WANTED", "1")), std::vector<std::string>{"sr0"});
}

TEST_F(ZPKBlockDeviceTest, ADeviceThatGoesAnswersWithNothing) {
    addStick();
    const auto partition = ZPKBlockDevice::withName("sdb1");
    ASSERT_TRUE(partition);
    std::filesystem::remove_all("/sys/devices");
    EXPECT_EQ(partition->name(), "sdb1");
    EXPECT_FALSE(partition->hasRemovableMedium());
    EXPECT_FALSE(partition->isPluggable());
    EXPECT_FALSE(ZPKBlockDevice::withName("sdb1"));
}

TEST_F(ZPKBlockDeviceTest, MountsWithoutADeviceHaveNone) {
    addDrive();
    EXPECT_FALSE(ZPKBlockDevice::ofMount({"proc", "/proc", makedev(0, 5)}));
    EXPECT_FALSE(ZPKBlockDevice::ofMount({"/dev/null", "/x", makedev(0, 5)})) << "no block device";
    EXPECT_FALSE(ZPKBlockDevice::ofMount({"/dev/sr9", "/x", makedev(11, 9)}));
}

TEST(ZPKBlockDeviceRecordTest, OddRecordsGiveWhatCanBeRead) {
    struct Row {
        std::string record;
        Properties properties;
    };
    const Row rows[] = {
        {"", {}},
        {"E:A=1\nE:B=2", {{"A", "1"}, {"B", "2"}}},
        {"E:A=1\nE:A=0\n", {{"A", "0"}}},
        {"E:A=\nE:B==x\n", {{"A", ""}, {"B", "=x"}}},
        {"E:\nE:=1\nE:A\nE\n:\n\n=", {}},
        {" E:A=1\ne:B=1\nEE:C=1\nS:E:D=1\n", {}},
        {"E:A=1\r\n", {{"A", "1\r"}}},
        {std::string("E:A=1\0\xff\nE:B=1\n", 14), {{"A", std::string("1\0\xff", 3)}, {"B", "1"}}},
    };
    for (const Row& row : rows) {
        Properties properties;
        ZPKBlockDevice::addRecord(row.record, properties);
        EXPECT_EQ(properties, row.properties) << ::testing::PrintToString(row.record);
    }
}

TEST(ZPKKernelDeviceTest, NumbersAreTwoDecimals) {
    EXPECT_EQ(ZPKKernelDevice::numberOfText("8:17"), makedev(8, 17));
    EXPECT_EQ(ZPKKernelDevice::numberOfText("259:1048575"), makedev(259, 1048575));
    for (const char* const text :
         {"", ":", "8", "8:", ":1", "-8:1", "+8:1", "8:1 ", " 8:1", "8:0x1", "8:1:2", "99999999999:0"}) {
        EXPECT_FALSE(ZPKKernelDevice::numberOfText(text)) << text;
    }
}

}  // namespace
