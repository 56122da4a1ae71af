// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/ArchiveCheck.h"

#include <gmock/gmock.h>

#include <filesystem>

#include "Archive/Archive.h"
#include "Tests/Tools/zpkpack/PackagerFixture.h"
#include "Tools/zpkpack/FirstErrorSink.h"

using ::testing::HasSubstr;
using zpk_packager::ArchiveCheck;

namespace zpk_test {

namespace {

class ArchiveCheckTest : public PackagerFixture {
protected:
    void SetUp() override {
        // Large enough for members to be read before the end is.
        writeFile(source("Data/deep/er/file"), noise(4000000));
        zpk_packager::FirstErrorSink sink;
        ASSERT_TRUE(zpk_archive::create(source("Data"), m_archive, sink)) << sink.text();
    }

    std::string failure(const std::string& name = "Data") const {
        return failureOf([&] { ArchiveCheck::run(m_archive, source("Data"), name); });
    }

    const std::string m_archive = m_folder / "Data.dat";
};

TEST_F(ArchiveCheckTest, AcceptsAnArchiveOfTheFolder) {
    EXPECT_EQ(failure(), "");
}

TEST_F(ArchiveCheckTest, NamesTheItemThatTheArchiveLacks) {
    writeFile(source("Data/deep/er/new"), "");
    EXPECT_EQ(failure(), "the archive of " + source("Data") + " lacks Data/deep/er/new");
}

TEST_F(ArchiveCheckTest, WantsTheFolderItselfAtTheTop) {
    EXPECT_THAT(failure("Info"), HasSubstr("lacks Info"));
}

TEST_F(ArchiveCheckTest, ReadsTheArchiveToItsEnd) {
    const auto size = std::filesystem::file_size(m_archive);
    std::filesystem::resize_file(m_archive, size - 1);
    EXPECT_THAT(failure(),
                HasSubstr("the archive of " + source("Data") + " cannot be read back: " + m_archive));
}

TEST_F(ArchiveCheckTest, NamesTheFolderThatCannotBeCompared) {
    const std::string closed = source("Data/deep");
    std::filesystem::permissions(closed, std::filesystem::perms(0));
    EXPECT_EQ(failureAsOrdinaryUser([&] { ArchiveCheck::run(m_archive, source("Data"), "Data"); }),
              closed + ": Permission denied");
}

TEST_F(ArchiveCheckTest, SaysThatThereIsNoArchive) {
    std::filesystem::remove(m_archive);
    EXPECT_THAT(failure(), HasSubstr("No such file or directory"));
}

}  // namespace

}  // namespace zpk_test
