// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/FilesInFlight.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "Archive/Failure.h"
#include "Archive/FolderWriter.h"
#include "Tests/Archive/ArchiveFixture.h"

namespace {

namespace fs = std::filesystem;
using namespace zpk_archive;
using namespace zpk_test;

std::span<const std::uint8_t> bytesOf(const std::string& text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

/// What is sent stays in flight until something waits for it: no thread takes it, and it fills no batch.
class FilesInFlightTest : public ::testing::Test {
protected:
    void send(const std::string& name, const std::string& contents) {
        m_writer.sendFile(MemberPath(name), name, bytesOf(contents), {0644, {1000000000, 0}});
    }
    bool exists(const std::string& name) { return fs::exists(m_folder / name); }

    template <typename Work>
    static std::string failureOf(const Work& work) {
        try {
            work();
        } catch (const MemberFailure& failure) {
            return failure.what();
        }
        return "none";
    }

    const TemporaryFolder m_folder;
    FolderWriter m_writer{m_folder.path(), {}, 0};
};

TEST_F(FilesInFlightTest, StayInFlightUntilTheyAreWaitedFor) {
    send("a", "1");
    EXPECT_FALSE(exists("a"));
    m_writer.settle();
    EXPECT_EQ(readFile(m_folder / "a"), "1");
}

TEST_F(FilesInFlightTest, LastOfOneNameStays) {
    send("a", "first");
    send("a", "second");
    m_writer.closeFile(m_writer.makeFile(MemberPath("b")), {0644, {}});
    send("b", "later");
    send("c", "sooner");
    m_writer.closeFile(m_writer.makeFile(MemberPath("c")), {0644, {}});
    m_writer.settle();
    EXPECT_EQ(readFile(m_folder / "a"), "second");
    EXPECT_EQ(readFile(m_folder / "b"), "later");
    EXPECT_EQ(readFile(m_folder / "c"), "");
}

TEST_F(FilesInFlightTest, FolderOrLinkReplacesTheFile) {
    send("a", "1");
    m_writer.makeFolder(MemberPath("a"), {0755, {}});
    send("b", "1");
    m_writer.makeSymbolicLink(MemberPath("b"), "target", {});
    m_writer.finish();
    EXPECT_TRUE(fs::is_directory(m_folder / "a"));
    EXPECT_TRUE(fs::is_symlink(m_folder / "b"));
}

TEST_F(FilesInFlightTest, NothingIsMadeBelowAFile) {
    send("a", "1");
    EXPECT_EQ(failureOf([&] { send("a/b", "2"); }), "a part of its path is no folder");
    EXPECT_EQ(failureOf([&] {
                  m_writer.makeFolder(MemberPath("a/c"), {0755, {}});
              }),
              "a part of its path is no folder");
    m_writer.settle();
    EXPECT_EQ(readFile(m_folder / "a"), "1");
}

TEST_F(FilesInFlightTest, FolderThatGetsAFileIsNotEmpty) {
    m_writer.makeFolder(MemberPath("d"), {0755, {}});
    send("d/file", "1");
    EXPECT_EQ(failureOf([&] { m_writer.makeSymbolicLink(MemberPath("d"), "target", {}); }),
              "Directory not empty");
    m_writer.makeFolder(MemberPath("e"), {0755, {}});
    send("e/file", "1");
    std::vector<std::string> failures;
    m_writer.tellOfFiles([&](const std::string& name, const std::string& reason) {
        failures.push_back(name + ": " + reason);
    });
    send("e", "2");
    m_writer.settle();
    EXPECT_EQ(failures, std::vector<std::string>{"e: Directory not empty"});
    EXPECT_EQ(readFile(m_folder / "d/file") + readFile(m_folder / "e/file"), "11");
}

TEST_F(FilesInFlightTest, EmptyFolderGivesWay) {
    m_writer.makeFolder(MemberPath("d"), {0755, {}});
    send("d", "1");
    m_writer.finish();
    EXPECT_EQ(readFile(m_folder / "d"), "1");
}

TEST_F(FilesInFlightTest, AreThereForWhoeverAsks) {
    send("d/a", "1");
    EXPECT_TRUE(m_writer.identify(MemberPath("d/a")).has_value());
    send("d/b", "2");
    EXPECT_EQ(m_writer.readFile(MemberPath("d/b"), 10), "2");
    send("d/c", "3");
    EXPECT_TRUE(m_writer.locate(MemberPath("d/c")).isOpen());
    send("d/e", "4");
    m_writer.remove(MemberPath("d/e"));
    m_writer.settle();
    EXPECT_FALSE(exists("d/e"));
}

TEST_F(FilesInFlightTest, FolderGetsItsModeAndTimeBehindThem) {
    m_writer.makeFolder(MemberPath("d"), {0511, {1000000000, 0}});
    send("d/file", "1");
    m_writer.finish();
    struct stat status {};
    ASSERT_EQ(::stat((m_folder / "d").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0511U);
    EXPECT_EQ(status.st_mtime, 1000000000);
    EXPECT_EQ(readFile(m_folder / "d/file"), "1");
}

TEST_F(FilesInFlightTest, FolderGetsItsTimeBehindThemAlsoWhenThereIsNoRoomToWait) {
    m_writer.makeFolder(MemberPath("d"), {0755, {1000000000, 0}});
    send("d/file", "1");
    std::string deep;
    for (int level = 0; level < 15; ++level) {
        deep += std::string(250, 'd') + "/";
    }
    for (int i = 0; i < 2000; ++i) {
        m_writer.makeFolder(MemberPath(deep + std::to_string(i)), {0755, {}});
    }
    struct stat status {};
    ASSERT_EQ(::stat((m_folder / "d").c_str(), &status), 0);
    EXPECT_EQ(status.st_mtime, 1000000000) << "it has had to wait for others";
    m_writer.finish();
    ASSERT_EQ(::stat((m_folder / "d").c_str(), &status), 0);
    EXPECT_EQ(status.st_mtime, 1000000000);
    EXPECT_TRUE(exists("d/file"));
}

TEST_F(FilesInFlightTest, ModesAreExactWhateverTheMaskAndTheOrder) {
    const mode_t before = ::umask(027);
    for (int i = 0; i < 20; ++i) {
        for (const mode_t mode : {0600U, 0644U, 0666U, 0755U, 0400U}) {
            const std::string name = std::to_string(i) + "-" + std::to_string(mode);
            m_writer.sendFile(MemberPath(name), name, {}, {mode, {}});
        }
    }
    m_writer.settle();
    ::umask(before);
    for (const fs::directory_entry& item : fs::directory_iterator(m_folder.path())) {
        struct stat status {};
        ASSERT_EQ(::stat(item.path().c_str(), &status), 0);
        const std::string name = item.path().filename();
        EXPECT_EQ(std::to_string(status.st_mode & 07777), name.substr(name.find('-') + 1)) << name;
    }
}

TEST_F(FilesInFlightTest, NamesThatAFileSystemMayTakeForOneAreOne) {
    const auto folder = std::make_shared<OpenFolder>(
        ZPKFileDescriptor(::open(m_folder.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)));
    const auto meet = [&](const char* inFlight, const char* later) {
        FilesInFlight files(0);
        EXPECT_TRUE(files.add(folder, inFlight, inFlight, {}, {}));
        const bool mayHold = files.mayHold(*folder, later);
        files.settle({});
        return mayHold;
    };
    EXPECT_TRUE(meet("readme", "README"));
    EXPECT_TRUE(meet("\xc3\xa9", "\xc3\x89")) << "a letter in two cases";
    EXPECT_TRUE(meet("k", "\xe2\x84\xaa")) << "the sign of the unit is a letter to some";
    EXPECT_TRUE(meet("longname.text", "LONGNA~1.TEX"));
    EXPECT_TRUE(meet("LONGNA~1.TEX", "longname.text"));
    EXPECT_TRUE(meet("a", "a."));
    EXPECT_TRUE(meet("a", "a "));
    EXPECT_FALSE(meet("a", "b"));
    EXPECT_FALSE(meet("a", "aa"));
    EXPECT_FALSE(meet("a[", "a{")) << "no letters, though as far apart";
}

/// What is in flight takes little memory, whatever it is that is large of the files.
TEST(FileBatchTest, IsFullByItsFilesTheirContentsOrTheirNames) {
    const TemporaryFolder folder;
    const auto open = std::make_shared<OpenFolder>(
        ZPKFileDescriptor(::open(folder.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)));
    const auto filesUntilFull = [&](std::size_t size, std::size_t nameSize) {
        const std::string contents(size, 'x');
        FileBatch batch;
        int files = 0;
        for (; !batch.isFull() && files < 1000; ++files) {
            batch.add(open, "x", std::string(nameSize, 'x'), bytesOf(contents), {});
        }
        return files;
    };
    EXPECT_EQ(filesUntilFull(0, 1), 64);
    EXPECT_EQ(filesUntilFull(FileBatch::kFileLimit, 1), 4);
    EXPECT_EQ(filesUntilFull(0, 4095), 32);
}

/// As many as fill batches many times over, in threads. What each name has last is known.
TEST(FilesInFlightThreadsTest, OutcomeIsThatOfOneAfterTheOther) {
    const TemporaryFolder folder;
    std::map<std::string, std::string> expected;
    {
        FolderWriter writer(folder.path(), {}, 3);
        std::mt19937 numbers(1);
        for (int i = 0; i < 2500; ++i) {
            const std::string name =
                "folder " + std::to_string(i / 40 % 10) + "/file " + std::to_string(numbers() % 200);
            const std::string contents = std::to_string(i) + std::string(numbers() % 2000, 'x');
            if (numbers() % 100 == 0) {
                writer.closeFile(writer.makeFile(MemberPath(name)), {0644, {}});
                expected[name] = "";
            } else {
                writer.sendFile(MemberPath(name), name, bytesOf(contents), {0644, {}});
                expected[name] = contents;
            }
        }
        writer.finish();
    }
    std::map<std::string, std::string> found;
    for (const fs::directory_entry& item : fs::recursive_directory_iterator(folder.path())) {
        if (item.is_regular_file()) {
            found[fs::relative(item.path(), folder.path())] = readFile(item.path());
        }
    }
    EXPECT_EQ(found.size(), expected.size());
    EXPECT_TRUE(found == expected);
}

TEST(FilesInFlightThreadsTest, FailuresAreToldInTheirOrder) {
    const TemporaryFolder folder;
    FolderWriter writer(folder.path(), {}, 3);
    std::vector<std::string> failures;
    std::vector<std::string> expected;
    writer.tellOfFiles([&](const std::string& name, const std::string& reason) {
        EXPECT_EQ(reason, "Directory not empty");
        failures.push_back(name);
    });
    for (int i = 0; i < 700; ++i) {
        const std::string number = std::to_string(i);
        if (i % 7 == 0) {
            // Where a folder with a file stands no file can be.
            writer.closeFile(writer.makeFile(MemberPath(number + "/file")), {0644, {}});
            expected.push_back(number);
        }
        writer.sendFile(MemberPath(number), number, bytesOf("x"), {0644, {}});
    }
    writer.settle();
    EXPECT_EQ(failures, expected);
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.path()), fs::directory_iterator()), 700);
}

TEST(FilesInFlightThreadsTest, WhatNobodyWaitsForIsWholeOrMissing) {
    const TemporaryFolder folder;
    {
        FolderWriter writer(folder.path(), {}, 3);
        for (int i = 0; i < 1000; ++i) {
            writer.sendFile(MemberPath(std::to_string(i)), "", bytesOf("whole"), {0644, {}});
        }
    }
    for (const fs::directory_entry& item : fs::directory_iterator(folder.path())) {
        EXPECT_EQ(readFile(item.path()), "whole");
    }
}

}  // namespace
