// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>
#include <sys/sysmacros.h>
#include <umockdev.h>
#include <unistd.h>

#include <filesystem>

#include "Platform/ZPKMountTable.h"
#include "Platform/ZPKOpticalDevices.h"
#include "Platform/ZPKRemovableMedia.h"
#include "Tests/Support/TemporaryFolder.h"

namespace {

using MediaType = ZPKOpticalDevices::MediaType;
using Names = std::vector<std::string>;
using zpk_test::TemporaryFolder;
using zpk_test::writeFile;

const Names kCompactDisc = {"ID_CDROM_MEDIA_CD"};
const Names kRecordable = {"ID_CDROM_MEDIA_CD_R"};
const Names kRewritable = {"ID_CDROM_MEDIA_CD_RW"};
const Names kDvd = {"ID_CDROM_MEDIA_DVD"};
const Names kAudio = {"ID_CDROM_MEDIA_CD", "ID_CDROM_MEDIA_TRACK_COUNT_AUDIO"};

/// A machine whose devices are made up.
class ZPKMediaTest : public ::testing::Test {
protected:
    void SetUp() override { m_machine = umockdev_testbed_new(); }
    void TearDown() override { g_object_unref(m_machine); }

    struct Device {
        std::string name;
        /// "major:minor"
        std::string number;
        bool removable;
        /// Properties with the value 1.
        Names marks;
        std::string type = "disk";
    };

    std::string add(const Device& device, const std::string& parent = "") {
        std::vector<std::string> properties{"DEVNAME",   "/dev/" + device.name,
                                            "DEVTYPE",   device.type,
                                            "MAJOR",     device.number.substr(0, device.number.find(':')),
                                            "MINOR",     device.number.substr(device.number.find(':') + 1),
                                            "ID_SERIAL", device.name};
        for (const std::string& mark : device.marks) {
            properties.push_back(mark);
            properties.push_back("1");
        }
        std::vector<std::string> attributes{"dev", device.number};
        if (device.type == "disk") {
            attributes.insert(attributes.end(), {"removable", device.removable ? "1" : "0"});
        }
        // The mocked machine lists a device by its number among the block devices where its path says so.
        return addRaw("block", (parent.empty() ? "made-up/block/" : "block/") + device.name, parent,
                      attributes, properties);
    }

    std::string addRaw(const std::string& subsystem, const std::string& name, const std::string& parent,
                       std::vector<std::string> attributes, std::vector<std::string> properties) {
        gchar* const path = umockdev_testbed_add_devicev(m_machine, subsystem.c_str(), name.c_str(),
                                                         parent.empty() ? nullptr : parent.c_str(),
                                                         texts(attributes).data(), texts(properties).data());
        EXPECT_NE(path, nullptr) << name;
        const std::string result = path == nullptr ? "" : path;
        g_free(path);
        return result;
    }

    /// An optical drive, with a disc where `media` says of what kind.
    void addDrive(const std::string& name, const std::string& number, const Names& media,
                  bool removable = true) {
        Names marks = media;
        marks.push_back("ID_CDROM");
        if (!media.empty()) {
            marks.push_back("ID_CDROM_MEDIA");
        }
        add({name, number, removable, marks});
    }

    /// Mount points of removable media, for the given lines of a mount table.
    Names mounted(const std::string& table) const {
        writeFile(m_folder / "mountinfo", table);
        return ZPKRemovableMedia::mountPoints(ZPKMountTable(m_folder / "mountinfo"));
    }

    TemporaryFolder m_folder;
    UMockdevTestbed* m_machine = nullptr;

private:
    static std::vector<gchar*> texts(std::vector<std::string>& strings) {
        std::vector<gchar*> pointers;
        for (std::string& string : strings) {
            pointers.push_back(string.data());
        }
        pointers.push_back(nullptr);
        return pointers;
    }
};

TEST_F(ZPKMediaTest, MediaTypeTellsDiscsApart) {
    addDrive("sr0", "11:0", kCompactDisc);
    addDrive("sr1", "11:1", kRecordable);
    addDrive("sr2", "11:2", kRewritable);
    addDrive("sr3", "11:3", kDvd);
    addDrive("sr4", "11:4", kAudio);
    addDrive("sr5", "11:5", {});
    add({"sda", "8:0", false, {}});
    add({"sdb", "8:16", true, {}});
    struct Row {
        const char* name;
        std::optional<MediaType> type;
    };
    const Row rows[] = {
        {"sr0", MediaType::CDROM},      {"sr1", MediaType::CDR},      {"sr2", MediaType::Other},
        {"sr3", MediaType::Other},      {"sr4", MediaType::CDROM},    {"sr5", MediaType::Other},
        {"sda", std::nullopt},          {"sdb", std::nullopt},        {"sr9", std::nullopt},
        {"../block/sr0", std::nullopt}, {"sr0/../sr0", std::nullopt}, {"sr0/.", std::nullopt}};
    for (const Row& row : rows) {
        EXPECT_EQ(ZPKOpticalDevices::mediaTypeOfDevice(row.name), row.type) << row.name;
    }
}

TEST_F(ZPKMediaTest, EjectableMediaAreCDsOfAnyKind) {
    EXPECT_EQ(ZPKOpticalDevices::ejectableMediaNames(), Names{});
    addDrive("sr0", "11:0", kCompactDisc);
    addDrive("sr1", "11:1", {});
    addDrive("sr2", "11:2", kDvd);
    addDrive("sr3", "11:3", kRecordable);
    addDrive("sr4", "11:4", kAudio);
    addDrive("sr10", "11:10", kRewritable);
    addDrive("sr11", "11:11", kAudio, false);
    add({"sda", "8:0", false, {}});
    const std::string stick = add({"sdb", "8:16", true, {}});
    add({"sdb1", "8:17", true, {}, "partition"}, stick);
    EXPECT_EQ(ZPKOpticalDevices::ejectableMediaNames(), (Names{"sr0", "sr10", "sr3", "sr4"}));
}

TEST_F(ZPKMediaTest, DiscsThatComeAndGoAreSeen) {
    addDrive("sr0", "11:0", {});
    EXPECT_EQ(ZPKOpticalDevices::ejectableMediaNames(), Names{});
    umockdev_testbed_set_property(m_machine, "/sys/devices/made-up/block/sr0", "ID_CDROM_MEDIA", "1");
    umockdev_testbed_set_property(m_machine, "/sys/devices/made-up/block/sr0", "ID_CDROM_MEDIA_CD", "1");
    EXPECT_EQ(ZPKOpticalDevices::ejectableMediaNames(), Names{"sr0"});
    EXPECT_EQ(ZPKOpticalDevices::mediaTypeOfDevice("sr0"), MediaType::CDROM);
    umockdev_testbed_set_property(m_machine, "/sys/devices/made-up/block/sr0", "ID_CDROM_MEDIA", "0");
    EXPECT_EQ(ZPKOpticalDevices::ejectableMediaNames(), Names{});
}

TEST_F(ZPKMediaTest, MountedRemovableMediaAreGivenInMountOrder) {
    addDrive("sr0", "11:0", kCompactDisc);
    addDrive("sr1", "11:1", kDvd, false);
    add({"sda", "8:0", false, {}});
    const std::string stick = add({"sdb", "8:16", true, {}});
    add({"sdb1", "8:17", true, {}, "partition"}, stick);
    const std::string port = addRaw("usb", "1-1", "", {"removable", "removable"}, {"DEVTYPE", "usb_device"});
    add({"sdc", "8:32", false, {}}, port);
    const std::string builtIn = addRaw("usb", "1-2", "", {"removable", "fixed"}, {"DEVTYPE", "usb_device"});
    add({"sdd", "8:48", false, {}}, builtIn);
    EXPECT_EQ(mounted("20 1 8:0 / / rw - ext4 /dev/sda rw\n"
                      "21 20 0:5 / /proc rw - proc proc rw\n"
                      "22 20 8:17 / /media/ann/STICK rw - vfat /dev/sdb1 rw\n"
                      "23 20 11:0 / /media/ann/My\\040Disc\\011\\134 ro - iso9660 /dev/sr0 ro\n"
                      "24 20 11:1 / /media/dvd ro - udf /dev/sr1 ro\n"
                      "25 20 8:32 / /media/drive rw - ext4 /dev/sdc rw\n"
                      "26 20 8:48 / /media/built-in rw - ext4 /dev/sdd rw\n"
                      "27 20 8:99 / /media/gone rw - ext4 /dev/sdz rw\n"
                      "28 20 0:40 / /mnt/net rw - nfs server:/export rw\n"),
              (Names{"/media/ann/STICK", "/media/ann/My Disc\t\\", "/media/dvd", "/media/drive"}));
}

TEST_F(ZPKMediaTest, BrokenLinesOfTheMountTableHideNothing) {
    addDrive("sr0", "11:0", kCompactDisc);
    EXPECT_EQ(mounted("20 1 8:0 / / rw - ext4 /dev/sda rw\n"
                      "nonsense\n"
                      "23 20 11:0 / /media/one ro - iso9660 /dev/sr0 ro\n"
                      "24 20 x:y / /media/two ro\n"
                      "\n"
                      "25 20 11:0 / /media/three ro - iso9660 /dev/sr0 ro\n"),
              (Names{"/media/one", "/media/three"}));
    EXPECT_EQ(mounted(""), Names{});
}

TEST(ZPKMountTableTest, MissingTableIsEmpty) {
    EXPECT_TRUE(ZPKMountTable("/no/such/table").mounts().empty());
}

/// The mounts of a table with the given lines.
std::vector<ZPKMount> mountsOf(const std::string& table) {
    const TemporaryFolder folder;
    writeFile(folder / "mountinfo", table);
    return ZPKMountTable(folder / "mountinfo").mounts();
}

TEST(ZPKMountTableTest, FieldsAreReadWithWhatTheKernelEscapes) {
    struct Row {
        std::string line;
        std::string source;
        std::string target;
    };
    const Row rows[] = {
        {"9 1 8:1 / /x rw - ext4 /dev/sda1 rw", "/dev/sda1", "/x"},
        {"9 1 8:1 / /x rw shared:1 - ext4 /dev/sda1 rw", "/dev/sda1", "/x"},
        {"9 1 8:1 / /x rw shared:1 master:2 unbindable - ext4 - rw", "-", "/x"},
        {"9 1 8:1 / /x rw - tmpfs  rw", "", "/x"},
        {"9 1 8:1 / /x rw - tmpfs t", "t", "/x"},
        {"9 1 8:1 /- /- - - - - -", "-", "/-"},
        {R"(9 1 8:1 / /a\040b\011c\012d\134e\043f rw - x //h/s\040s rw)", "//h/s s", "/a b\tc\nd\\e#f"},
        {R"(9 1 8:1 / /\134040\303\274 rw - x y rw)", "y", "/\\040\u00fc"},
        {R"(9 1 8:1 / /\04\08a\400\x40\ rw - x \ rw)", "\\", R"(/\04\08a\400\x40\)"},
        {"9 1 8:1 / /\xff\xfe rw - x y rw", "y", "/\xff\xfe"},
    };
    for (const Row& row : rows) {
        const std::vector<ZPKMount> mounts = mountsOf(row.line);
        ASSERT_EQ(mounts.size(), 1U) << row.line;
        EXPECT_EQ(mounts[0].source, row.source) << row.line;
        EXPECT_EQ(mounts[0].target, row.target) << row.line;
        EXPECT_EQ(mounts[0].device, makedev(8, 1)) << row.line;
    }
}

TEST(ZPKMountTableTest, LinesThatSayNoMountArePassedOver) {
    const std::string endless(1'000'000, ' ');
    for (const std::string& line :
         {std::string(), std::string("nonsense"), std::string("9 1 8:1 / /x rw"),
          std::string("9 1 8:1 / /x rw -"), std::string("9 1 8:1 / /x rw - ext4"),
          std::string("9 1 8:1 / /x - ext4 /dev/sda rw"), std::string("9 1 8:1 / /x rw shared:1 ext4 a rw"),
          std::string("9 1 8 / /x rw - ext4 a rw"), std::string("9 1 8:1: / /x rw - ext4 a rw"),
          std::string("9 1 -8:1 / /x rw - ext4 a rw"), std::string("9 1 8:99999999999 / /x rw - ext4 a rw"),
          std::string("9 1 8:1 / x rw - ext4 a rw"), std::string("9 1 8:1 /  rw - ext4 a rw"),
          std::string("9 1 8:1\0 / /x rw - ext4 a rw", 28), endless}) {
        EXPECT_TRUE(mountsOf(line + "\n").empty()) << line.substr(0, 60);
        EXPECT_EQ(mountsOf(line + "\n9 1 8:1 / /x rw - ext4 a rw\n" + line).size(), 1U) << line.substr(0, 60);
    }
}

TEST(ZPKMountTableTest, UnreadableTablesAreEmpty) {
    const TemporaryFolder folder;
    EXPECT_TRUE(ZPKMountTable(folder.path()).mounts().empty());
    writeFile(folder / "mountinfo", "9 1 8:1 / /x rw - ext4 a rw\n");
    std::filesystem::resize_file(folder / "mountinfo", 17 * 1024 * 1024);
    EXPECT_TRUE(ZPKMountTable(folder / "mountinfo").mounts().empty()) << "larger than any table";
}

TEST(ZPKMountTableTest, PathsLieOnTheDeepestMount) {
    const TemporaryFolder folder;
    for (const char* const name : {"disc/sub/file", "disc2/file"}) {
        writeFile(folder / name, "x");
    }
    std::filesystem::create_symlink("disc/sub", folder / "link");
    writeFile(folder / "mountinfo",
              "1 0 8:0 / / rw - ext4 /dev/sda rw\n"
              "2 1 11:9 / " +
                  folder.path() + "/disc ro - iso9660 /dev/sr9 ro\n" + "3 1 11:0 / " + folder.path() +
                  "/disc ro - iso9660 /dev/sr0 ro\n" + "4 3 11:1 / " + folder.path() +
                  "/disc/sub ro - iso9660 /dev/sr1 ro\n");
    const ZPKMountTable table(folder / "mountinfo");
    struct Row {
        std::string path;
        std::optional<std::string> source;
    };
    const Row rows[] = {{folder / "disc", "/dev/sr0"},           {folder / "disc/", "/dev/sr0"},
                        {folder / "disc/sub/file", "/dev/sr1"},  {folder / "link", "/dev/sr1"},
                        {folder / "disc2/file", "/dev/sda"},     {"/", "/dev/sda"},
                        {folder / "disc/missing", std::nullopt}, {"", std::nullopt}};
    for (const Row& row : rows) {
        const auto mount = table.mountOfPath(row.path);
        EXPECT_EQ(mount ? std::optional(mount->source) : std::nullopt, row.source) << row.path;
    }
}

TEST(ZPKMountTableTest, CurrentTableKnowsTheKernelsFileSystems) {
    EXPECT_EQ(ZPKOpticalDevices::mountSourceOfPath("/proc/self/status"), "proc");
    EXPECT_EQ(ZPKOpticalDevices::mountSourceOfPath("/no/such/path"), std::nullopt);
    EXPECT_FALSE(ZPKMountTable::current().mounts().empty());
}

}  // namespace
