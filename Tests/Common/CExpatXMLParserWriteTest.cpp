// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

// What a document that is written does to the file in its place.

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <iterator>
#include <memory>
#include <string>

#include "Common/CExpatXMLParser.h"
#include "Common/CXMLElement.h"
#include "Tests/Support/TemporaryFolder.h"

namespace {

using namespace varno_zpk;

/// Lets no file grow over `bytes`, as on a full disk.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) {
        ::signal(SIGXFSZ, SIG_IGN);
        ::getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limit{bytes, m_before.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() { ::setrlimit(RLIMIT_FSIZE, &m_before); }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    rlimit m_before{};
};

class CExpatXMLParserWriteTest : public ::testing::Test {
protected:
    /// Writes a document with this text to the file of that name.
    void write(const std::string& name, const std::string& text) const {
        CXMLDocument document;
        document.InitWithRootElement(CXMLNode::CreateElementWithNameWithStringValue("a", text.c_str()));
        CExpatXMLParser().WriteXMLDocumentToFile(&document, (m_folder / name).c_str());
    }

    static std::string written(const std::string& text) {
        return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<a>" + text + "</a>";
    }

    mode_t mode(const std::string& name) const {
        struct stat info {};
        EXPECT_EQ(::stat((m_folder / name).c_str(), &info), 0);
        return info.st_mode & 07777;
    }

    std::ptrdiff_t itemCount() const {
        return std::distance(std::filesystem::directory_iterator(m_folder.path()), {});
    }

    const zpk_test::TemporaryFolder m_folder;
};

TEST_F(CExpatXMLParserWriteTest, NewFileHasTheUsualPermissions) {
    const mode_t before = ::umask(022);
    write("new.xml", "t");
    ::umask(before);
    EXPECT_EQ(zpk_test::readFile(m_folder / "new.xml"), written("t"));
    EXPECT_EQ(mode("new.xml"), 0644u);
    EXPECT_EQ(itemCount(), 1);
}

TEST_F(CExpatXMLParserWriteTest, ReplacedFileKeepsItsPermissions) {
    zpk_test::writeFile(m_folder / "file.xml", std::string(1000, 'o'));
    ASSERT_EQ(::chmod((m_folder / "file.xml").c_str(), 0600), 0);
    write("file.xml", "new");
    EXPECT_EQ(zpk_test::readFile(m_folder / "file.xml"), written("new"));
    EXPECT_EQ(mode("file.xml"), 0600u);
    EXPECT_EQ(itemCount(), 1);
}

TEST_F(CExpatXMLParserWriteTest, OtherNamesOfTheOldFileKeepSeeingIt) {
    zpk_test::writeFile(m_folder / "file.xml", "old");
    ASSERT_EQ(::link((m_folder / "file.xml").c_str(), (m_folder / "other.xml").c_str()), 0);
    write("file.xml", "new");
    EXPECT_EQ(zpk_test::readFile(m_folder / "file.xml"), written("new"));
    EXPECT_EQ(zpk_test::readFile(m_folder / "other.xml"), "old");
}

TEST_F(CExpatXMLParserWriteTest, WriteThatStopsHalfWayLeavesTheOldFile) {
    zpk_test::writeFile(m_folder / "file.xml", "old");
    {
        const FileSizeLimit limit(50);
        write("file.xml", std::string(100, 't'));
    }
    EXPECT_EQ(zpk_test::readFile(m_folder / "file.xml"), "old");
    EXPECT_EQ(itemCount(), 1);
}

TEST_F(CExpatXMLParserWriteTest, FolderInTheWayStays) {
    zpk_test::writeFile(m_folder / "target/inside", "kept");
    write("target", "new");
    EXPECT_EQ(zpk_test::readFile(m_folder / "target/inside"), "kept");
    EXPECT_EQ(itemCount(), 1);
}

TEST_F(CExpatXMLParserWriteTest, MissingFolderGoesUnnoticed) {
    write("missing/file.xml", "new");
    EXPECT_EQ(itemCount(), 0);
}

}  // namespace
