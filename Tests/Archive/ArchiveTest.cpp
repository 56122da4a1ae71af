// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/Archive.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "Tests/Archive/ArchiveFixture.h"

namespace {

namespace fs = std::filesystem;
using namespace zpk_test;
using Errors = std::vector<std::string>;

Errors errorsOfCreate(const std::string& source, const std::string& archive) {
    KeepingSink sink;
    const bool isGood = zpk_archive::create(source, archive, sink);
    EXPECT_EQ(isGood, sink.errors.empty());
    return sink.errors;
}

Errors errorsOfExtract(const std::string& archive, const std::string& folder) {
    KeepingSink sink;
    const bool isGood = zpk_archive::extract(archive, folder, sink);
    EXPECT_EQ(isGood, sink.errors.empty());
    return sink.errors;
}

Errors errorsOfList(const std::string& archive) {
    KeepingSink sink;
    const bool isGood = zpk_archive::list(
        archive, [](const zpk_archive::MemberDescription&) {}, sink);
    EXPECT_EQ(isGood, sink.errors.empty());
    return sink.errors;
}

TEST(ArchiveTest, SourceThatCannotBePackedIsNamedWithItsReason) {
    const TemporaryFolder folder;
    const std::string archive = folder / "new.dat";
    fs::create_directory(folder / "TRAILER!!!");
    fs::create_symlink("nowhere", folder / "dangling");
    for (const auto& [source, reason] : std::vector<std::pair<std::string, std::string>>{
             {folder / "missing", "No such file or directory"},
             {folder / "dangling", "No such file or directory"},
             {"", "No such file or directory"},
             {"/", "it has no name to be packed under"},
             {"/dev/null", "neither a folder nor a file"},
             {folder / "TRAILER!!!", "a CPIO archive cannot hold a thing of this name"}}) {
        EXPECT_EQ(errorsOfCreate(source, archive), Errors{source + ": " + reason});
        EXPECT_FALSE(fs::exists(archive));
    }
}

TEST(ArchiveTest, EachMemberIsListedWithTheDataThatItBrings) {
    const TemporaryFolder folder;
    const std::string archive = folder / "archive";
    writeFile(archive, makeOdc({{"file", S_IFREG | 0644, "abc"},
                                {"folder", S_IFDIR | 0755, "de"},
                                {"fifo", S_IFIFO | 0644, "f"},
                                {"link", S_IFLNK | 0777, "file"}}));
    std::map<std::string, std::uint64_t> sizes;
    KeepingSink sink;
    EXPECT_TRUE(zpk_archive::list(
        archive, [&](const zpk_archive::MemberDescription& member) { sizes[member.name] = member.size; },
        sink));
    EXPECT_EQ(sizes,
              (std::map<std::string, std::uint64_t>{{"fifo", 1}, {"file", 3}, {"folder", 2}, {"link", 0}}));
}

TEST(ArchiveTest, UnreadableSourceIsNamedByTheTool) {
    const TemporaryFolder folder;
    fs::create_directory(folder / "closed");
    ::chmod((folder / "closed").c_str(), 0);
    ::chmod(folder.path().c_str(), 0777);
    const std::vector<std::string> start = {ZPK_DITTO, "-c", "-z", "-rsrc", "--keepParent"};
    for (const auto& [name, reason] : std::vector<std::pair<std::string, std::string>>{
             {"closed", "Permission denied"}, {"missing", "No such file or directory"}}) {
        std::vector<std::string> command = start;
        command.insert(command.end(), {folder / name, folder / "d.dat"});
        const Outcome outcome = runProgram(command, becomeNobody);
        EXPECT_EQ(outcome.exitStatus, 1);
        EXPECT_EQ(outcome.standardError, "ditto: " + (folder / name) + ": " + reason + "\n");
        EXPECT_FALSE(fs::exists(folder / "d.dat"));
    }
}

TEST(ArchiveTest, ArchiveThatCannotBeWrittenIsNamedWithItsReason) {
    const TemporaryFolder folder;
    writeFile(folder / "D/a", "a");
    fs::create_directory(folder / "taken");
    EXPECT_EQ(errorsOfCreate(folder / "D", folder / "missing/d.dat"),
              Errors{(folder / "missing/d.dat") + ": No such file or directory"});
    EXPECT_EQ(errorsOfCreate(folder / "D", folder / "taken"),
              Errors{(folder / "taken") + ": Is a directory"});
}

TEST(ArchiveTest, ArchiveThatCannotBeReadIsNamedWithItsReason) {
    const TemporaryFolder folder;
    writeFile(folder / "empty", "");
    writeFile(folder / "text", "no archive\n");
    writeFile(folder / "bzip2", "BZh9\x31\x41\x59\x26\x53\x59 and no more of it");
    writeFile(folder / "cut", "BZh9\x31\x41\x59\x26");
    for (const auto& [name, reason] : std::vector<std::pair<std::string, std::string>>{
             {"missing", "No such file or directory"},
             {"empty", "the file is empty"},
             {"text", "not a CPIO archive"},
             {"bzip2", "the compressed data are damaged"},
             {"cut", "the archive ends in the middle of its compressed data"}}) {
        const Errors expected{(folder / name) + ": " + reason};
        EXPECT_EQ(errorsOfExtract(folder / name, folder / "out"), expected);
        EXPECT_EQ(errorsOfList(folder / name), expected);
    }
}

TEST(ArchiveTest, FolderThatCannotBeWrittenIsNamedWithItsReason) {
    const TemporaryFolder folder;
    writeFile(folder / "archive", makeOdc({{"a", S_IFREG | 0644, "a"}}));
    writeFile(folder / "file", "in the way");
    EXPECT_EQ(errorsOfExtract(folder / "archive", folder / "file"),
              Errors{(folder / "file") + ": Not a directory"});
    EXPECT_EQ(errorsOfExtract(folder / "archive", folder / "file/below"),
              Errors{(folder / "file/below") + ": Not a directory"});
}

TEST(ArchiveTest, MembersThatAreRefusedAreNamedRawAndTheRestIsUnpacked) {
    const TemporaryFolder folder;
    const std::string turned = "../\xe2\x80\xaetxt.exe";
    writeFile(
        folder / "archive",
        makeOdc({{turned, S_IFREG | 0644, "x"}, {"fifo", S_IFIFO | 0644}, {"good", S_IFREG | 0644, "good"}}));
    EXPECT_EQ(errorsOfExtract(folder / "archive", folder / "out"),
              (Errors{turned + ": the name climbs out of the folder",
                      "fifo: devices, FIFOs and sockets are not unpacked"}));
    EXPECT_EQ(readFile(folder / "out/good"), "good");
    const Outcome outcome = extract(folder / "archive", folder / "out");
    EXPECT_TRUE(outcome.standardError.starts_with(
        "ditto: ../\\xe2\\x80\\xaetxt.exe: the name climbs out of the folder\n"))
        << outcome.standardError;
}

}  // namespace
