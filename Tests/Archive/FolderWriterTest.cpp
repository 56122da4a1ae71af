// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/FolderWriter.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <string>

#include "Archive/Failure.h"
#include "Tests/Archive/ArchiveFixture.h"

namespace {

namespace fs = std::filesystem;
using namespace zpk_archive;
using namespace zpk_test;

/// Runs the step in a process of its own, without the rights of root; what it throws ends it with 1.
int statusAsNobody(mode_t mask, const std::function<void()>& step) {
    const pid_t child = ::fork();
    if (child == 0) {
        ::umask(mask);
        becomeNobody();
        try {
            step();
        } catch (const std::exception& failure) {
            std::fprintf(stderr, "%s\n", failure.what());
            ::_exit(1);
        }
        ::_exit(0);
    }
    int status = -1;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::string refusalOf(const std::string& folder) {
    try {
        FolderWriter writer(folder);
    } catch (const ArchiveFailure& failure) {
        return failure.what();
    }
    return "opened";
}

mode_t permissionsOf(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(::lstat(path.c_str(), &status), 0) << path;
    return status.st_mode & 07777;
}

FileIdentity identityOfNewFile(FolderWriter& writer, const MemberPath& path) {
    writer.closeFile(writer.makeFile(path), {0644, {}});
    return writer.identify(path).value();
}

TEST(FolderWriterTest, MakesTheFolderAndThoseOnTheWayToIt) {
    const TemporaryFolder folder;
    EXPECT_EQ(refusalOf(folder / "a/b/c"), "opened");
    EXPECT_TRUE(fs::is_directory(folder / "a/b/c"));
    EXPECT_EQ(refusalOf(folder / "a/b/c"), "opened");
    EXPECT_EQ(refusalOf(folder / "a/d//e/"), "opened");
    EXPECT_TRUE(fs::is_directory(folder / "a/d/e"));
}

TEST(FolderWriterTest, SaysWhyTheFolderCannotBeMade) {
    const TemporaryFolder folder;
    writeFile(folder / "file", "x");
    EXPECT_EQ(refusalOf(folder / "file"), "Not a directory");
    EXPECT_EQ(refusalOf(folder / "file/below"), "Not a directory");
    EXPECT_EQ(refusalOf(""), "No such file or directory");
    fs::create_directory(folder / "closed");
    ::chmod((folder / "closed").c_str(), 0555);
    ::chmod(folder.path().c_str(), 0755);
    EXPECT_EQ(statusAsNobody(022,
                             [&] {
                                 const std::string reason = refusalOf(folder / "closed/new/newer");
                                 ::_exit(reason == "Permission denied" ? 0 : 2);
                             }),
              0);
}

TEST(FolderWriterTest, WritesWhateverTheProcesssMask) {
    const TemporaryFolder folder;
    ::chmod(folder.path().c_str(), 0777);
    for (const mode_t mask : {mode_t{0}, mode_t{0277}, mode_t{0777}}) {
        SCOPED_TRACE(mask);
        const std::string root = folder / std::to_string(mask);
        EXPECT_EQ(
            statusAsNobody(mask,
                           [&] {
                               FolderWriter writer(root + "/way/folder",
                                                   [](const auto&, const auto&) { ::_exit(3); });
                               writer.makeFolder(MemberPath("made"), {0750, {}});
                               writer.closeFile(writer.makeFile(MemberPath("made/implied/f")), {0604, {}});
                               const MemberPath later("made/later");
                               writer.closeFileForNow(writer.makeFile(later), later, {0440, {}});
                               const auto identity = writer.identify(later);
                               writer.closeFileForNow(writer.reopenFile(later, *identity), later, {0440, {}});
                               writer.finish();
                           }),
            0);
        const std::string made = root + "/way/folder/made";
        EXPECT_EQ(permissionsOf(made), 0750U);
        EXPECT_EQ(permissionsOf(made + "/implied/f"), 0604U);
        EXPECT_EQ(permissionsOf(made + "/later"), 0440U);
        EXPECT_EQ(permissionsOf(made + "/implied") & 0700U, 0700U);
        EXPECT_EQ(permissionsOf(root) & 0700U, 0700U);
        EXPECT_EQ(permissionsOf(root) & 0077U & mask, 0U);
    }
}

TEST(FolderWriterTest, FolderIsShutAfterThoseInItHaveTheirModes) {
    const TemporaryFolder folder;
    ::chmod(folder.path().c_str(), 0777);
    EXPECT_EQ(statusAsNobody(022,
                             [&] {
                                 FolderWriter writer(folder.path(),
                                                     [](const auto&, const auto&) { ::_exit(3); });
                                 writer.makeFolder(MemberPath("shut"), {0, {}});
                                 writer.makeFolder(MemberPath("shut/inner"), {0510, {}});
                                 writer.makeFolder(MemberPath("shut/inner/last"), {0705, {}});
                                 writer.finish();
                             }),
              0);
    EXPECT_EQ(permissionsOf(folder / "shut"), 0U);
    ::chmod((folder / "shut").c_str(), 0700);
    EXPECT_EQ(permissionsOf(folder / "shut/inner"), 0510U);
    EXPECT_EQ(permissionsOf(folder / "shut/inner/last"), 0705U);
}

TEST(FolderWriterTest, LinkToItselfLeavesTheFile) {
    const TemporaryFolder folder;
    FolderWriter writer(folder.path());
    const MemberPath path("file");
    const FileIdentity identity = identityOfNewFile(writer, path);
    writeFile(folder / "file", "contents");
    EXPECT_NO_THROW(writer.makeHardLink(path, path, identity));
    EXPECT_EQ(readFile(folder / "file"), "contents");
}

TEST(FolderWriterTest, MemberLandsBelowItsOwnFolderWhateverTheWayBefore) {
    const TemporaryFolder folder;
    FolderWriter writer(folder.path());
    const char* const names[] = {"a/p/1", "a/q/2", "q/3", "a/q/4", "b/5", "a/b/6", "7", "b/p/8", "p/9"};
    for (const char* const name : names) {
        writer.closeFile(writer.makeFile(MemberPath(name)), {0644, {}});
        EXPECT_TRUE(fs::is_regular_file(folder / name)) << name;
    }
    const auto isFile = [](const fs::directory_entry& entry) { return entry.is_regular_file(); };
    EXPECT_EQ(std::count_if(fs::recursive_directory_iterator(folder.path()), {}, isFile),
              static_cast<std::ptrdiff_t>(std::size(names)));
}

TEST(FolderWriterTest, FileBehindALinkIsNeitherReopenedNorRead) {
    const TemporaryFolder folder;
    const TemporaryFolder outside;
    FolderWriter writer(folder.path());
    const MemberPath path("file");
    const FileIdentity identity = identityOfNewFile(writer, path);
    writeFile(folder / "file", "untouched");
    fs::rename(folder / "file", outside / "file");
    fs::create_symlink(outside / "file", folder / "file");
    EXPECT_THROW(writer.reopenFile(path, identity), MemberFailure);
    EXPECT_THROW(writer.readFile(path, 100), MemberFailure);
    EXPECT_EQ(readFile(outside / "file"), "untouched");
}

TEST(FolderWriterTest, FileThatWasExchangedIsNotReopened) {
    const TemporaryFolder folder;
    FolderWriter writer(folder.path());
    const MemberPath path("file");
    const FileIdentity identity = identityOfNewFile(writer, path);
    EXPECT_NO_THROW(writer.reopenFile(path, identity));
    writeFile(folder / "other", "untouched");
    fs::rename(folder / "other", folder / "file");
    EXPECT_THROW(writer.reopenFile(path, identity), MemberFailure);
    EXPECT_EQ(readFile(folder / "file"), "untouched");
    EXPECT_FALSE(writer.identify(MemberPath("missing/thing")).has_value());
}

}  // namespace
