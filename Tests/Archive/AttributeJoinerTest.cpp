// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/AttributeJoiner.h"

#include <filesystem>

#include "Archive/FolderWriter.h"
#include "Tests/Archive/HostileArchiveFixture.h"
#include "Tests/Support/InstructionCount.h"

namespace {

using namespace zpk_test;
using zpk_archive::AttributeJoiner;
using zpk_archive::FolderWriter;
using zpk_archive::MemberPath;

/// A file's attributes have come, and wait for it.
class AttributeJoinerTest : public ::testing::Test {
protected:
    void SetUp() override {
        writeFile(m_folder / "._file", kEmptyAppleDouble);
        m_joiner.companionMade(MemberPath("._file"), true);
        m_joiner.otherMade(MemberPath("link"));
    }

    /// So many that none can be known that comes now.
    void fillUp() {
        for (unsigned i = 0; i < 1 << 20; ++i) {
            m_joiner.thingMade(MemberPath("another"));
        }
    }

    bool companionIsThere() const { return std::filesystem::exists(m_folder / "._file"); }

    const TemporaryFolder m_folder;
    KeepingSink m_sink;
    FolderWriter m_writer{m_folder.path()};
    AttributeJoiner m_joiner{m_writer, m_sink};
};

TEST_F(AttributeJoinerTest, FileThatFailedIsNotWaitedFor) {
    m_joiner.thingMade(MemberPath("file"));
    m_joiner.thingFailed(MemberPath("file"));
    m_joiner.finish();
    EXPECT_EQ(m_sink.warnings, std::vector<std::string>());
    EXPECT_TRUE(companionIsThere());
}

TEST_F(AttributeJoinerTest, FileThatFailedMayBeThereFromBefore) {
    writeFile(m_folder / "file", "x");
    m_joiner.thingMade(MemberPath("file"));
    m_joiner.thingMade(MemberPath("file"));
    m_joiner.thingFailed(MemberPath("file"));
    m_joiner.finish();
    EXPECT_EQ(m_sink.warnings, std::vector<std::string>());
    EXPECT_FALSE(companionIsThere());
}

TEST_F(AttributeJoinerTest, FailureIsNoOtherFiles) {
    writeFile(m_folder / "file", "x");
    m_joiner.thingMade(MemberPath("file"));
    m_joiner.thingMade(MemberPath("another"));
    m_joiner.thingFailed(MemberPath("another"));
    m_joiner.finish();
    EXPECT_FALSE(companionIsThere());
}

TEST_F(AttributeJoinerTest, TellsOfAFileBehindAMillionMembers) {
    fillUp();
    writeFile(m_folder / "file", "x");
    m_joiner.thingMade(MemberPath("file"));
    m_joiner.finish();
    EXPECT_EQ(m_sink.warnings, std::vector<std::string>({"file: its extended attributes are kept in the file "
                                                         "._file (too many members came between them)"}));
    EXPECT_TRUE(companionIsThere());
}

TEST_F(AttributeJoinerTest, FailureBehindAMillionMembersIsNoneOfThem) {
    writeFile(m_folder / "file", "x");
    m_joiner.thingMade(MemberPath("file"));
    fillUp();
    m_joiner.thingMade(MemberPath("file"));
    m_joiner.thingFailed(MemberPath("file"));
    m_joiner.finish();
    EXPECT_FALSE(companionIsThere());
}

TEST_F(AttributeJoinerTest, AFailureCostsNoMoreThanAFile) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "valgrind runs no sanitized program";
#endif
    const auto instructionsFor = [this](const char* made, const char* failed) {
        return instructionsOf({ZPK_ATTRIBUTE_JOINER_TOOL, m_folder.path(), made, failed});
    };
    EXPECT_LT(instructionsFor("8000", "4000"), 1.5 * instructionsFor("8000", "0"));
}

}  // namespace
