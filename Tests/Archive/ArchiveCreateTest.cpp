// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include <signal.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <filesystem>

#include "Tests/Archive/ArchiveFixture.h"

namespace {

namespace fs = std::filesystem;
using namespace zpk_test;

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
                                           {folder / "Alias/", "Alias"},
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

TEST(ArchiveCreateTest, ArchiveIsOpenToItsOwnerWhateverTheMask) {
    for (const mode_t mask : {mode_t{0}, mode_t{027}, mode_t{0777}}) {
        SCOPED_TRACE(mask);
        const TemporaryFolder folder;
        writeFile(folder / "source", "x");
        const Outcome outcome = create(folder / "source", folder / "archive", [mask] { ::umask(mask); });
        EXPECT_EQ(outcome.exitStatus, 0) << outcome.standardError;
        struct stat status {};
        ASSERT_EQ(::stat((folder / "archive").c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777, 0666 & ~(mask & 077));
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
    Outcome outcome = runProgram(
        {ZPK_DITTO, "-c", "-z", "-rsrc", "--keepParent", folder / "D", folder / "d.dat"}, becomeNobody);
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

}  // namespace
