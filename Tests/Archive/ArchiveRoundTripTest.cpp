// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include <fcntl.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <filesystem>

#include "Tests/Archive/ArchiveFixture.h"

namespace {

namespace fs = std::filesystem;
using namespace zpk_test;

std::string randomText(std::size_t size, unsigned seed) {
    std::string text(size, '\0');
    std::uint64_t state = seed * 2654435761U + 1;
    for (char& byte : text) {
        state = state * 6364136223846793005U + 1442695040888963407U;
        byte = static_cast<char>("abcdefgh\n"[(state >> 33) % 9]);
    }
    return text;
}

void setTime(const std::string& path, time_t seconds) {
    timespec times[2] = {{seconds, 0}, {seconds, 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW), 0) << path;
}

/// A folder with every kind of thing that an archive carries.
void makeTree(const std::string& root) {
    writeFile(root + "/plain.txt", "hello\n");
    writeFile(root + "/empty", "");
    writeFile(root + "/large.bin", randomText(3 * 1024 * 1024 + 17, 1));
    writeFile(root + "/sub/deeper/program", "#!/bin/sh\n");
    writeFile(root + "/linked", "one file, three names\n");
    fs::create_hard_link(root + "/linked", root + "/sub/linked too");
    fs::create_hard_link(root + "/linked", root + "/zz");
    fs::create_symlink("plain.txt", root + "/to plain");
    fs::create_symlink("/nowhere/at all", root + "/dangling");
    fs::create_symlink("../..", root + "/sub/upwards");
    writeFile(root + "/name\nwith newline", "n");
    writeFile(root + "/not \xff\xfe utf-8", "x");
    writeFile(root + "/-c", "an option's name");
    writeFile(root + "/" + std::string(255, 'L'), "long");
    fs::create_directories(root + "/empty folder");
    writeFile(root + "/readonly/inside", "kept");
    chmod((root + "/sub/deeper/program").c_str(), 0755);
    chmod((root + "/plain.txt").c_str(), 0640);
    chmod((root + "/empty").c_str(), 0);
    chmod((root + "/empty folder").c_str(), 01777);
    time_t time = 1000000001;
    for (const char* name : {"/plain.txt", "/to plain", "/large.bin", "/empty folder", "/readonly", "/sub"}) {
        setTime(root + name, time);
        time += 3600;
    }
    chmod((root + "/readonly").c_str(), 0555);
}

class ArchiveRoundTripTest : public ::testing::Test {
protected:
    void SetUp() override { makeTree(m_tree); }
    void TearDown() override { chmod((m_tree + "/readonly").c_str(), 0755); }

    TemporaryFolder m_folder;
    std::string m_tree = m_folder / "Data";
    std::string m_archive = m_folder / "Data.dat";
    std::string m_target = m_folder / "out";
};

TEST_F(ArchiveRoundTripTest, EverythingComesBack) {
    Outcome created = create(m_tree, m_archive);
    EXPECT_EQ(created.exitStatus, 0) << created.standardError;
    Outcome extracted = extract(m_archive, m_target);
    EXPECT_EQ(extracted.exitStatus, 0) << extracted.standardError;
    EXPECT_EQ(created.standardError + extracted.standardError, "");
    EXPECT_EQ(snapshot(m_tree), snapshot(m_target + "/Data"));
}

TEST_F(ArchiveRoundTripTest, ExtractingTwiceOverItselfGivesTheSame) {
    ASSERT_EQ(create(m_tree, m_archive).exitStatus, 0);
    ASSERT_EQ(extract(m_archive, m_target).exitStatus, 0);
    Outcome again = extract(m_archive, m_target);
    EXPECT_EQ(again.exitStatus, 0) << again.standardError;
    EXPECT_EQ(snapshot(m_tree), snapshot(m_target + "/Data"));
}

TEST_F(ArchiveRoundTripTest, SameTreeGivesSameBytes) {
    std::string copy = m_folder / "elsewhere/Data";
    fs::create_directories(m_folder / "elsewhere");
    shell("cp -a '" + m_tree + "' '" + copy + "'");
    ASSERT_EQ(create(m_tree, m_archive).exitStatus, 0);
    ASSERT_EQ(create(copy, m_folder / "second.dat").exitStatus, 0);
    EXPECT_TRUE(readFile(m_archive) == readFile(m_folder / "second.dat"));
}

TEST_F(ArchiveRoundTripTest, ListNamesMembersInOrderWithoutTouchingDisk) {
    ASSERT_EQ(create(m_tree, m_archive).exitStatus, 0);
    KeepingSink sink;
    std::vector<std::string> names;
    std::map<std::string, zpk_archive::MemberDescription> members;
    bool good = zpk_archive::list(
        m_archive,
        [&](const zpk_archive::MemberDescription& member) {
            names.push_back(member.name);
            members[member.name] = member;
        },
        sink);
    EXPECT_TRUE(good);
    ASSERT_FALSE(names.empty());
    EXPECT_EQ(names.front(), "Data");
    EXPECT_EQ(names.size(), snapshot(m_tree).size() + 1);
    EXPECT_EQ(members["Data/large.bin"].size, 3U * 1024 * 1024 + 17);
    EXPECT_EQ(members["Data/large.bin"].type, zpk_archive::MemberType::RegularFile);
    EXPECT_EQ(members["Data/plain.txt"].permissions, 0640U);
    EXPECT_EQ(members["Data/to plain"].type, zpk_archive::MemberType::SymbolicLink);
    EXPECT_EQ(members["Data/to plain"].linkTarget, "plain.txt");
    EXPECT_EQ(members["Data/zz"].type, zpk_archive::MemberType::HardLink);
    EXPECT_EQ(members["Data/zz"].linkTarget, "Data/linked");
    EXPECT_EQ(members["Data/empty folder"].type, zpk_archive::MemberType::Folder);
    EXPECT_FALSE(fs::exists(m_target));
}

TEST_F(ArchiveRoundTripTest, SystemToolsUnpackOurs) {
    ASSERT_EQ(create(m_tree, m_archive).exitStatus, 0);
    struct Row {
        const char* program;
        std::string line;
    };
    const std::string in = " < '" + m_archive + "'";
    for (const Row& row : std::vector<Row>{
             {"cpio", "gzip -dc" + in + " | cpio -idm --quiet 2>/dev/null"},
             {"bsdtar", "bsdtar -xpf '" + m_archive + "'"},
             {"pigz", "pigz -dc" + in + " | bsdtar -xpf -"},
         }) {
        if (!hasProgram(row.program)) {
            GTEST_SKIP() << row.program << " is not installed";
        }
        SCOPED_TRACE(row.program);
        std::string target = m_folder / (std::string("by ") + row.program);
        fs::create_directories(target);
        shell("cd '" + target + "'; umask 0; " + row.line);
        // GNU cpio sets no times of links, and not all of folders.
        EXPECT_EQ(snapshot(m_tree, false), snapshot(target + "/Data", false));
        chmod((target + "/Data/readonly").c_str(), 0755);
    }
}

struct Packing {
    const char* name;
    const char* program;
    const char* line;
};

class ForeignArchiveTest : public ArchiveRoundTripTest, public ::testing::WithParamInterface<Packing> {};

TEST_P(ForeignArchiveTest, UnpacksToTheSameTree) {
    if (!hasProgram(GetParam().program)) {
        GTEST_SKIP() << GetParam().program << " is not installed";
    }
    setenv("ARCHIVE", m_archive.c_str(), 1);
    shell("cd '" + m_folder.path() + "'; " + GetParam().line);
    Outcome extracted = extract(m_archive, m_target);
    EXPECT_EQ(extracted.exitStatus, 0) << extracted.standardError;
    EXPECT_EQ(snapshot(m_tree), snapshot(m_target + "/Data"));
}

INSTANTIATE_TEST_SUITE_P(
    Packings, ForeignArchiveTest,
    ::testing::Values(
        Packing{"Odc", "cpio", "find Data -print0 | cpio -0 -o --quiet 2>/dev/null -H odc | gzip > $ARCHIVE"},
        Packing{"Newc", "cpio",
                "find Data -print0 | cpio -0 -o --quiet 2>/dev/null -H newc | gzip > $ARCHIVE"},
        Packing{"Crc", "cpio", "find Data -print0 | cpio -0 -o --quiet 2>/dev/null -H crc | gzip > $ARCHIVE"},
        Packing{"Binary", "cpio",
                "find Data -print0 | cpio -0 -o --quiet 2>/dev/null -H bin | gzip > $ARCHIVE"},
        Packing{"FoldersAfterTheirContents", "cpio",
                "find Data -depth -print0 | cpio -0 -o --quiet 2>/dev/null -H newc | gzip > $ARCHIVE"},
        Packing{"NamesWithDotSlash", "cpio",
                "find ./Data -print0 | cpio -0 -o --quiet 2>/dev/null -H odc | gzip > $ARCHIVE"},
        Packing{"BsdtarOdc", "bsdtar", "bsdtar --format cpio -cf - Data | gzip > $ARCHIVE"},
        Packing{"BsdtarNewc", "bsdtar", "bsdtar --format newc -cf - Data | gzip > $ARCHIVE"},
        Packing{"Pigz", "pigz", "bsdtar --format cpio -cf - Data | pigz > $ARCHIVE"},
        Packing{"PigzIndependentFast", "pigz", "bsdtar --format cpio -cf - Data | pigz -1 -i > $ARCHIVE"},
        Packing{"StoredBlocks", "pigz", "bsdtar --format cpio -cf - Data | pigz -0 > $ARCHIVE"},
        Packing{"GzipHeaderWithNameAndTime", "gzip",
                "bsdtar --format cpio -cf inner Data; gzip inner; mv inner.gz $ARCHIVE"},
        Packing{"SeveralGzipMembers", "gzip",
                "bsdtar --format cpio -cf plain Data; split -b 100003 plain part.; rm -f $ARCHIVE;"
                "for p in part.*; do gzip -c $p >> $ARCHIVE; done"},
        Packing{"EmptyGzipMembersBetween", "gzip",
                "bsdtar --format cpio -cf plain Data; split -b 1000003 plain part.; rm -f $ARCHIVE;"
                "for p in part.*; do gzip -c $p >> $ARCHIVE; gzip -c < /dev/null >> $ARCHIVE; done"},
        Packing{"ZerosAfterTheLastGzipMember", "gzip",
                "bsdtar --format cpio -cf - Data | gzip > $ARCHIVE; head -c 100000 /dev/zero >> $ARCHIVE"},
        Packing{"RubbishAfterTheEndMark", "gzip",
                "(bsdtar --format cpio -cf - Data; head -c 5000000 /dev/urandom) | gzip > $ARCHIVE"},
        Packing{"Plain", "bsdtar", "bsdtar --format cpio -cf $ARCHIVE Data"},
        Packing{"PlainNewcFromCpio", "cpio",
                "find Data -print0 | cpio -0 -o --quiet 2>/dev/null -H newc > $ARCHIVE"},
        Packing{"Bzip2", "bzip2", "bsdtar --format cpio -cf - Data | bzip2 > $ARCHIVE"},
        Packing{"SeveralBzip2Streams", "bzip2",
                "bsdtar --format cpio -cf plain Data; split -b 700003 plain part.; rm -f $ARCHIVE;"
                "for p in part.*; do bzip2 -c $p >> $ARCHIVE; done"}),
    [](const auto& row) { return std::string(row.param.name); });

/// The other byte order of a binary archive: each header is thirteen 16-bit words.
std::string swapHeaders(std::string archive) {
    auto word = [&](std::size_t at) {
        return static_cast<std::size_t>(static_cast<unsigned char>(archive[at])) |
               static_cast<std::size_t>(static_cast<unsigned char>(archive[at + 1])) << 8;
    };
    for (std::size_t at = 0; at + 26 <= archive.size() && word(at) == 070707;) {
        std::size_t nameSize = word(at + 20);
        std::size_t size = word(at + 22) << 16 | word(at + 24);
        for (std::size_t i = at; i < at + 26; i += 2) {
            std::swap(archive[i], archive[i + 1]);
        }
        at += 26 + nameSize + nameSize % 2 + size + size % 2;
    }
    return archive;
}

TEST_F(ArchiveRoundTripTest, BinaryArchiveOfTheOtherByteOrder) {
    if (!hasProgram("cpio")) {
        GTEST_SKIP() << "cpio is not installed";
    }
    shell("cd '" + m_folder.path() + "'; find Data -print0 | cpio -0 -o --quiet 2>/dev/null -H bin > little");
    std::string little = readFile(m_folder / "little");
    std::string big = swapHeaders(little);
    ASSERT_EQ(big.substr(0, 2), std::string("\x71\xc7"));
    writeFile(m_archive, big);
    Outcome extracted = extract(m_archive, m_target);
    EXPECT_EQ(extracted.exitStatus, 0) << extracted.standardError;
    EXPECT_EQ(snapshot(m_tree), snapshot(m_target + "/Data"));
}

TEST_F(ArchiveRoundTripTest, OwnArchiveFollowedByForeignMembers) {
    shell("cd '" + m_folder.path() + "'; bsdtar --format cpio -cf plain Data");
    ASSERT_EQ(create(m_tree, m_archive).exitStatus, 0);
    // The trailing data of a second archive after the end mark is no concern of the first.
    shell("cd '" + m_folder.path() + "'; (cat Data.dat; gzip -c < plain) > both");
    Outcome extracted = extract(m_folder / "both", m_target);
    EXPECT_EQ(extracted.exitStatus, 0) << extracted.standardError;
    EXPECT_EQ(snapshot(m_tree), snapshot(m_target + "/Data"));
}

TEST(ArchiveCreateTest, TopLevelNameIsTheSourcesLastComponent) {
    TemporaryFolder folder;
    writeFile(folder / "Info/a", "a");
    fs::create_directory_symlink(folder / "Info", folder / "Alias");
    struct Row {
        std::string source;
        std::string top;
    };
    for (const Row& row : std::vector<Row>{{folder / "Info", "Info"},
                                           {folder / "Info/", "Info"},
                                           {folder / "Info///", "Info"},
                                           {folder / "Info/.", "Info"},
                                           {folder / "Info/./", "Info"},
                                           {folder / "Info/../Info", "Info"},
                                           {folder / "Alias", "Alias"},
                                           {folder / "Info/a", "a"}}) {
        SCOPED_TRACE(row.source);
        KeepingSink sink;
        std::vector<std::string> names;
        EXPECT_TRUE(zpk_archive::create(row.source, folder / "x.dat", sink));
        zpk_archive::list(
            folder / "x.dat", [&](const auto& member) { names.push_back(member.name); }, sink);
        ASSERT_FALSE(names.empty());
        EXPECT_EQ(names.front(), row.top);
        EXPECT_TRUE(sink.errors.empty());
    }
}

TEST(ArchiveCreateTest, SourceWithoutNameOrMissingLeavesTheOldArchive) {
    TemporaryFolder folder;
    writeFile(folder / "old.dat", "old");
    fs::create_directory(folder / "TRAILER!!!");
    for (const std::string& source :
         {std::string("/"), folder / "missing", folder / "TRAILER!!!", std::string()}) {
        Outcome outcome = create(source, folder / "old.dat");
        EXPECT_EQ(outcome.exitStatus, 1) << source;
        EXPECT_EQ(std::count(outcome.standardError.begin(), outcome.standardError.end(), '\n'), 1)
            << outcome.standardError;
    }
    EXPECT_EQ(readFile(folder / "old.dat"), "old");
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.path()), fs::directory_iterator()), 2);
}

TEST(ArchiveCreateTest, FailedOutputLeavesNothing) {
    TemporaryFolder folder;
    writeFile(folder / "Data/a", randomText(5000000, 2));
    writeFile(folder / "out.dat/in the way", "");
    EXPECT_EQ(create(folder / "Data", folder / "missing/out.dat").exitStatus, 1);
    Outcome isFolder = create(folder / "Data", folder / "out.dat");
    EXPECT_EQ(isFolder.exitStatus, 1);
    EXPECT_NE(isFolder.standardError.find("out.dat: Is a directory"), std::string::npos);
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.path()), fs::directory_iterator()), 2);
}

TEST(ArchiveCreateTest, SpecialFilesAreReportedAndLeftOut) {
    TemporaryFolder folder;
    writeFile(folder / "D/file", "kept");
    ASSERT_EQ(mkfifo((folder / "D/fifo").c_str(), 0600), 0);
    int listening = socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::string path = folder / "D/socket";
    ASSERT_LT(path.size(), sizeof(address.sun_path));
    std::memcpy(address.sun_path, path.c_str(), path.size());
    ASSERT_EQ(bind(listening, reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0);
    Outcome outcome = create(folder / "D", folder / "d.dat");
    close(listening);
    EXPECT_EQ(outcome.exitStatus, 1);
    EXPECT_EQ(outcome.standardError,
              "ditto: D/fifo: devices, FIFOs and sockets are not packed\n"
              "ditto: D/socket: devices, FIFOs and sockets are not packed\n");
    ASSERT_EQ(extract(folder / "d.dat", folder / "out").exitStatus, 0);
    EXPECT_EQ(readFile(folder / "out/D/file"), "kept");
}

TEST(ArchiveCreateTest, ArchiveInsideItsSourceLeavesItselfOut) {
    TemporaryFolder folder;
    writeFile(folder / "D/file", "kept");
    writeFile(folder / "D/self.dat", "the archive of last time");
    Outcome outcome = create(folder / "D", folder / "D/self.dat");
    EXPECT_EQ(outcome.exitStatus, 0);
    EXPECT_NE(outcome.standardError.find("the archive itself is left out"), std::string::npos);
    ASSERT_EQ(extract(folder / "D/self.dat", folder / "out").exitStatus, 0);
    EXPECT_EQ(snapshot(folder / "out/D").size(), 1U);
}

TEST(ArchiveCreateTest, EightGibibytesIsRefusedAndTheRestIsPacked) {
    TemporaryFolder folder;
    writeFile(folder / "D/a", "a");
    writeFile(folder / "D/big", "");
    writeFile(folder / "D/c", "c");
    fs::resize_file(folder / "D/big", std::uintmax_t{1} << 33);
    Outcome outcome = create(folder / "D", folder / "d.dat");
    EXPECT_EQ(outcome.exitStatus, 1);
    EXPECT_EQ(outcome.standardError, "ditto: D/big: a CPIO archive cannot hold a file of 8 GiB or more\n");
    ASSERT_EQ(extract(folder / "d.dat", folder / "out").exitStatus, 0);
    EXPECT_EQ(readFile(folder / "out/D/a") + readFile(folder / "out/D/c"), "ac");
    EXPECT_FALSE(fs::exists(folder / "out/D/big"));
}

TEST(ArchiveCreateTest, UnreadableFileIsReportedAndTheRestIsPacked) {
    TemporaryFolder folder;
    writeFile(folder / "D/a", "a");
    writeFile(folder / "D/locked", "b");
    chmod((folder / "D/locked").c_str(), 0);
    chmod(folder.path().c_str(), 0777);
    Outcome outcome =
        runProgram({ZPK_DITTO, "-c", "-z", "-rsrc", "--keepParent", folder / "D", folder / "d.dat"}, [] {
            if (geteuid() == 0 && (setgid(65534) != 0 || setuid(65534) != 0)) {
                _exit(126);
            }
        });
    EXPECT_EQ(outcome.exitStatus, 1);
    EXPECT_EQ(outcome.standardError, "ditto: D/locked: Permission denied\n");
    ASSERT_EQ(extract(folder / "d.dat", folder / "out").exitStatus, 0);
    EXPECT_EQ(readFile(folder / "out/D/a"), "a");
}

TEST(ArchiveCreateTest, FileThatChangesItsSizeIsReportedAndTheArchiveStaysSound) {
    TemporaryFolder folder;
    writeFile(folder / "D/a changing", randomText(1000, 3));
    writeFile(folder / "D/z", "z");
    struct Row {
        off_t start;
        off_t step;
        const char* reason;
    };
    constexpr off_t kLargest = 64000000;
    for (const Row& row : {Row{kLargest, -4096, "it became shorter while it was read"},
                           Row{0, 4096, "it became longer while it was read"}}) {
        SCOPED_TRACE(row.reason);
        bool seen = false;
        for (int attempt = 0; attempt < 20 && !seen; ++attempt) {
            pid_t changer = fork();
            if (changer == 0) {
                for (off_t size = row.start;; size += row.step) {
                    bool out = size < 0 || size > kLargest;
                    size = out ? row.start : size;
                    if (truncate((folder / "D/a changing").c_str(), size) != 0) {
                        _exit(1);
                    }
                }
            }
            Outcome outcome = create(folder / "D", folder / "d.dat");
            kill(changer, SIGKILL);
            waitpid(changer, nullptr, 0);
            seen = outcome.standardError.find(row.reason) != std::string::npos;
            EXPECT_EQ(outcome.exitStatus, outcome.standardError.empty() ? 0 : 1);
            ASSERT_EQ(extract(folder / "d.dat", folder / "out").exitStatus, 0);
            EXPECT_EQ(readFile(folder / "out/D/z"), "z");
        }
        EXPECT_TRUE(seen);
    }
}

TEST(ArchiveSparseTest, FileOverFourGibibytesComesBackWithItsHoles) {
    TemporaryFolder folder;
    writeFile(folder / "D/sparse", "start");
    std::uintmax_t size = (std::uintmax_t{1} << 32) + 12345;
    fs::resize_file(folder / "D/sparse", size);
    int file = open((folder / "D/sparse").c_str(), O_WRONLY);
    ASSERT_EQ(pwrite(file, "middle", 6, (off_t{1} << 31) + 1), 6);
    ASSERT_EQ(pwrite(file, "end", 3, (off_t{1} << 32) + 100), 3);
    close(file);
    Outcome created = create(folder / "D", folder / "d.dat");
    ASSERT_EQ(created.exitStatus, 0) << created.standardError;
    EXPECT_LT(created.peakMemory, 64 * 1024);
    Outcome extracted = extract(folder / "d.dat", folder / "out");
    ASSERT_EQ(extracted.exitStatus, 0) << extracted.standardError;
    EXPECT_LT(extracted.peakMemory, 64 * 1024);
    struct stat status {};
    ASSERT_EQ(stat((folder / "out/D/sparse").c_str(), &status), 0);
    EXPECT_EQ(static_cast<std::uintmax_t>(status.st_size), size);
    EXPECT_LT(status.st_blocks, 1024);
    file = open((folder / "out/D/sparse").c_str(), O_RDONLY);
    char bytes[8] = {};
    EXPECT_EQ(pread(file, bytes, 5, 0), 5);
    EXPECT_STREQ(bytes, "start");
    EXPECT_EQ(pread(file, bytes, 7, (off_t{1} << 31) + 1), 7);
    EXPECT_STREQ(bytes, "middle");
    EXPECT_EQ(pread(file, bytes, 8, (off_t{1} << 32) + 100), 8);
    EXPECT_STREQ(bytes, "end");
    close(file);
}

TEST(ArchiveSparseTest, ZerosAtEveryAlignmentComeBackExactly) {
    TemporaryFolder folder;
    int row = 0;
    for (std::size_t before : {0U, 1U, 4095U, 4096U, 4097U, 1048575U}) {
        for (std::size_t zeros : {1U, 4096U, 16384U, 16385U, 70000U, 1200000U}) {
            for (std::size_t after : {0U, 1U, 4096U}) {
                writeFile(folder / ("D/" + std::to_string(row++)),
                          std::string(before, 'b') + std::string(zeros, '\0') + std::string(after, 'a'));
            }
        }
    }
    ASSERT_EQ(create(folder / "D", folder / "d.dat").exitStatus, 0);
    ASSERT_EQ(extract(folder / "d.dat", folder / "out").exitStatus, 0);
    EXPECT_EQ(snapshot(folder / "D"), snapshot(folder / "out/D"));
}

std::string getAttribute(const std::string& path, const std::string& name) {
    char value[70000];
    ssize_t size = getxattr(path.c_str(), name.c_str(), value, sizeof(value));
    return size < 0 ? "absent" : std::string(value, static_cast<std::size_t>(size));
}

class ArchiveAttributeTest : public ::testing::Test {
protected:
    void SetUp() override {
        writeFile(m_folder / "D/file", "contents");
        if (!set("D/file", "user.probe", "x")) {
            GTEST_SKIP() << "the file system has no user attributes";
        }
        removexattr((m_folder / "D/file").c_str(), "user.probe");
    }

    bool set(const std::string& path, const std::string& name, const std::string& value) {
        return setxattr((m_folder / path).c_str(), name.c_str(), value.data(), value.size(), 0) == 0;
    }

    TemporaryFolder m_folder;
};

TEST_F(ArchiveAttributeTest, ComeBackOnFilesAndFolders) {
    const std::string finderInfo = std::string("TEXTttxt") + std::string(24, '\1');
    fs::create_directories(m_folder / "D/sub");
    writeFile(m_folder / "D/sub/read only", "r");
    ASSERT_TRUE(set("D/file", "user.com.apple.FinderInfo", finderInfo));
    ASSERT_TRUE(set("D/file", "user.com.apple.ResourceFork", "fork\0bytes"));
    ASSERT_TRUE(set("D/file", "user.comment", "a remark"));
    ASSERT_TRUE(set("D/file", "user.empty", ""));
    ASSERT_TRUE(set("D/sub", "user.on.folder", "yes"));
    ASSERT_TRUE(set("D", "user.on.top", "top"));
    ASSERT_TRUE(set("D/sub/read only", "user.x", std::string(3000, 'v')));
    chmod((m_folder / "D/sub/read only").c_str(), 0444);
    setTime(m_folder / "D/file", 1100000000);
    ASSERT_EQ(create(m_folder / "D", m_folder / "d.dat").exitStatus, 0);
    chmod(m_folder.path().c_str(), 0777);
    Outcome extracted = extract(m_folder / "d.dat", m_folder / "out", [] {
        if (geteuid() == 0 && (setgid(65534) != 0 || setuid(65534) != 0)) {
            _exit(126);
        }
    });
    EXPECT_EQ(extracted.exitStatus, 0);
    EXPECT_EQ(extracted.standardError, "");
    EXPECT_EQ(snapshot(m_folder / "D"), snapshot(m_folder / "out/D"));
    std::string file = m_folder / "out/D/file";
    EXPECT_EQ(getAttribute(file, "user.com.apple.FinderInfo"), finderInfo);
    EXPECT_EQ(getAttribute(file, "user.com.apple.ResourceFork"), "fork");
    EXPECT_EQ(getAttribute(file, "user.comment"), "a remark");
    EXPECT_EQ(getAttribute(file, "user.empty"), "");
    EXPECT_EQ(getAttribute(m_folder / "out/D/sub", "user.on.folder"), "yes");
    EXPECT_EQ(getAttribute(m_folder / "out/D", "user.on.top"), "top");
    EXPECT_EQ(getAttribute(m_folder / "out/D/sub/read only", "user.x"), std::string(3000, 'v'));
}

TEST_F(ArchiveAttributeTest, OddValuesOfThePlacedAttributesComeBack) {
    ASSERT_TRUE(set("D/file", "user.com.apple.FinderInfo", "short"));
    ASSERT_TRUE(set("D/file", "user.com.apple.ResourceFork", ""));
    writeFile(m_folder / "D/zero", "");
    ASSERT_TRUE(set("D/zero", "user.com.apple.FinderInfo", std::string(32, '\0')));
    ASSERT_EQ(create(m_folder / "D", m_folder / "d.dat").exitStatus, 0);
    ASSERT_EQ(extract(m_folder / "d.dat", m_folder / "out").exitStatus, 0);
    EXPECT_EQ(getAttribute(m_folder / "out/D/file", "user.com.apple.FinderInfo"), "short");
    EXPECT_EQ(getAttribute(m_folder / "out/D/file", "user.com.apple.ResourceFork"), "");
    EXPECT_EQ(getAttribute(m_folder / "out/D/zero", "user.com.apple.FinderInfo"), std::string(32, '\0'));
}

TEST_F(ArchiveAttributeTest, RealFileOfTheCompanionsNameSurvivesBesideAttributes) {
    writeFile(m_folder / "D/._file", "an ordinary file");
    ASSERT_TRUE(set("D/file", "user.a", "b"));
    ASSERT_EQ(create(m_folder / "D", m_folder / "d.dat").exitStatus, 0);
    ASSERT_EQ(extract(m_folder / "d.dat", m_folder / "out").exitStatus, 0);
    EXPECT_EQ(readFile(m_folder / "out/D/._file"), "an ordinary file");
    EXPECT_EQ(getAttribute(m_folder / "out/D/file", "user.a"), "b");
}

TEST_F(ArchiveAttributeTest, CompanionMayComeAnywhereAndStaysWithoutItsFile) {
    ASSERT_TRUE(set("D/file", "user.a", "b"));
    ASSERT_EQ(create(m_folder / "D", m_folder / "d.dat").exitStatus, 0);
    shell("cd '" + m_folder.path() +
          "'; gzip -dc < d.dat > plain; mkdir parts; cd parts; cpio -id --quiet < ../plain");
    std::string companion = readFile(m_folder / "parts/D/._file");
    RawMember file{"D/file", S_IFREG | 0400, "contents"};
    RawMember other{"D/other", S_IFREG | 0644, "other"};
    RawMember attributes{"D/._file", S_IFREG | 0, companion};
    struct Row {
        const char* name;
        std::vector<RawMember> members;
        bool joined;
    };
    for (const Row& row : std::vector<Row>{{"before", {attributes, other, file}, true},
                                           {"directly before", {attributes, file}, true},
                                           {"long after", {file, other, attributes}, true},
                                           {"alone", {attributes, other}, false}}) {
        SCOPED_TRACE(row.name);
        std::string out = m_folder / (std::string("out ") + row.name);
        writeFile(m_folder / "raw", makeOdc(row.members));
        Outcome outcome = extract(m_folder / "raw", out);
        EXPECT_EQ(outcome.exitStatus, 0) << outcome.standardError;
        EXPECT_EQ(fs::exists(out + "/D/._file"), !row.joined);
        EXPECT_EQ(getAttribute(out + "/D/file", "user.a"), row.joined ? "b" : "absent");
    }
}

TEST_F(ArchiveAttributeTest, WhatTheFileSystemRefusesIsKeptAsAFile) {
    TemporaryFolder mountPoint;
    if (geteuid() != 0 ||
        std::system(("mount -t ramfs none '" + mountPoint.path() + "' 2>/dev/null").c_str()) != 0) {
        GTEST_SKIP() << "cannot mount a file system without attributes";
    }
    ASSERT_TRUE(set("D/file", "user.a", "b"));
    EXPECT_EQ(create(m_folder / "D", m_folder / "d.dat").exitStatus, 0);
    Outcome outcome = extract(m_folder / "d.dat", mountPoint.path());
    EXPECT_EQ(outcome.exitStatus, 0);
    EXPECT_EQ(outcome.standardError,
              "ditto: D/file: warning: its extended attributes are kept in the file ._file (Operation not "
              "supported)\n");
    EXPECT_EQ(readFile(mountPoint / "D/file"), "contents");
    EXPECT_EQ(readFile(mountPoint / "D/._file").substr(0, 4), std::string("\0\5\x16\7", 4));
    shell("umount '" + mountPoint.path() + "'");
}

TEST_F(ArchiveAttributeTest, NameTooLongForACompanionIsAnError) {
    std::string name(254, 'n');
    writeFile(m_folder / ("D/" + name), "kept");
    ASSERT_TRUE(set("D/" + name, "user.a", "b"));
    EXPECT_EQ(create(m_folder / "D", m_folder / "d.dat").exitStatus, 1);
    ASSERT_EQ(extract(m_folder / "d.dat", m_folder / "out").exitStatus, 0);
    EXPECT_EQ(readFile(m_folder / ("out/D/" + name)), "kept");
}

}  // namespace
