// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Common/CAtomicFile.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "Common/CExpatXMLParser.h"
#include "Common/CXMLElement.h"
#include "Tests/Support/TemporaryFolder.h"

namespace {

using namespace varno_zpk;

std::size_t itemCount(const std::string& folder) {
    std::size_t count = 0;
    for ([[maybe_unused]] const auto& item : std::filesystem::directory_iterator(folder)) {
        ++count;
    }
    return count;
}

mode_t mode(const std::string& path) {
    struct stat info {};
    EXPECT_EQ(stat(path.c_str(), &info), 0);
    return info.st_mode & 07777;
}

TEST(CAtomicFileTest, WritesANewFileWithTheUsualPermissions) {
    const zpk_test::TemporaryFolder folder;
    umask(022);
    EXPECT_TRUE(CAtomicFile::Replace((folder / "new").c_str(), "contents"));
    EXPECT_EQ(zpk_test::readFile(folder / "new"), "contents");
    EXPECT_EQ(mode(folder / "new"), 0644u);
    EXPECT_EQ(itemCount(folder.path()), 1u);
}

TEST(CAtomicFileTest, ReplacesAFileAndKeepsItsPermissions) {
    const zpk_test::TemporaryFolder folder;
    zpk_test::writeFile(folder / "file", "a long old text");
    ASSERT_EQ(chmod((folder / "file").c_str(), 0600), 0);
    EXPECT_TRUE(CAtomicFile::Replace((folder / "file").c_str(), "new"));
    EXPECT_EQ(zpk_test::readFile(folder / "file"), "new");
    EXPECT_EQ(mode(folder / "file"), 0600u);
    EXPECT_EQ(itemCount(folder.path()), 1u);
}

TEST(CAtomicFileTest, OpenReaderKeepsSeeingTheOldFile) {
    const zpk_test::TemporaryFolder folder;
    zpk_test::writeFile(folder / "file", "old");
    ASSERT_EQ(link((folder / "file").c_str(), (folder / "other name").c_str()), 0);
    EXPECT_TRUE(CAtomicFile::Replace((folder / "file").c_str(), "new"));
    EXPECT_EQ(zpk_test::readFile(folder / "other name"), "old");
}

TEST(CAtomicFileTest, PathWithoutAFolderIsInTheWorkingFolder) {
    const zpk_test::TemporaryFolder folder;
    ASSERT_EQ(chdir(folder.path().c_str()), 0);
    EXPECT_TRUE(CAtomicFile::Replace("plain", "contents"));
    EXPECT_EQ(zpk_test::readFile(folder / "plain"), "contents");
    EXPECT_EQ(itemCount(folder.path()), 1u);
    ASSERT_EQ(chdir("/"), 0);
}

TEST(CAtomicFileTest, NameOfFullLengthIsPossible) {
    const zpk_test::TemporaryFolder folder;
    const std::string path = folder / std::string(255, 'n');
    EXPECT_TRUE(CAtomicFile::Replace(path.c_str(), "contents"));
    EXPECT_EQ(zpk_test::readFile(path), "contents");
}

TEST(CAtomicFileTest, LeftOverTemporaryFileIsPassedOver) {
    const zpk_test::TemporaryFolder folder;
    const std::string leftOver = folder / (".zpk-" + std::to_string(getpid()) + "-0");
    zpk_test::writeFile(leftOver, "left over");
    EXPECT_TRUE(CAtomicFile::Replace((folder / "file").c_str(), "new"));
    EXPECT_EQ(zpk_test::readFile(folder / "file"), "new");
    EXPECT_EQ(zpk_test::readFile(leftOver), "left over");
}

TEST(CAtomicFileTest, MissingFolderFails) {
    const zpk_test::TemporaryFolder folder;
    EXPECT_FALSE(CAtomicFile::Replace((folder / "missing/file").c_str(), "new"));
    EXPECT_EQ(itemCount(folder.path()), 0u);
}

TEST(CAtomicFileTest, FolderInTheWayFailsAndStays) {
    const zpk_test::TemporaryFolder folder;
    zpk_test::writeFile(folder / "target/inside", "kept");
    EXPECT_FALSE(CAtomicFile::Replace((folder / "target").c_str(), "new"));
    EXPECT_EQ(zpk_test::readFile(folder / "target/inside"), "kept");
    EXPECT_EQ(itemCount(folder.path()), 1u);
}

/// Lets no file grow over `bytes`, as on a full disk.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) {
        signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limit{bytes, m_before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() { setrlimit(RLIMIT_FSIZE, &m_before); }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    rlimit m_before{};
};

TEST(CAtomicFileTest, WriteThatStopsHalfWayLeavesTheOldFileAlone) {
    const zpk_test::TemporaryFolder folder;
    zpk_test::writeFile(folder / "file", "old");
    {
        const FileSizeLimit limit(1000);
        EXPECT_FALSE(CAtomicFile::Replace((folder / "file").c_str(), std::string(2000, 'n')));
    }
    EXPECT_EQ(zpk_test::readFile(folder / "file"), "old");
    EXPECT_EQ(itemCount(folder.path()), 1u);
}

TEST(CExpatXMLParserWriteTest, FailedWriteOfADocumentGoesUnnoticed) {
    const zpk_test::TemporaryFolder folder;
    zpk_test::writeFile(folder / "file.xml", "old");
    CXMLDocument document;
    document.InitWithRootElement(
        CXMLNode::CreateElementWithNameWithStringValue("a", std::string(100, 't').c_str()));
    {
        const FileSizeLimit limit(50);
        CExpatXMLParser().WriteXMLDocumentToFile(&document, (folder / "file.xml").c_str());
        CExpatXMLParser().WriteXMLDocumentToFile(&document, (folder / "missing/file.xml").c_str());
    }
    EXPECT_EQ(zpk_test::readFile(folder / "file.xml"), "old");
    EXPECT_EQ(itemCount(folder.path()), 1u);
}

}  // namespace
