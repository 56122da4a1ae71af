// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/CpioWriter.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <vector>

#include "Archive/Archive.h"
#include "Archive/CpioReader.h"
#include "Archive/Failure.h"
#include "Archive/GzipWriter.h"
#include "Archive/OutputFile.h"
#include "Archive/PlainStream.h"
#include "Tests/Archive/ArchiveFixture.h"

namespace {

using namespace zpk_archive;
using namespace zpk_test;

/// A name of that many bytes, in parts that a file may be called.
std::string longName(std::size_t size) {
    std::string name;
    while (name.size() < size) {
        name += name.empty() ? "" : "/";
        name += std::string(200, 'p');
    }
    name.resize(size, 'p');
    name.back() = 'p';
    return name;
}

/// Packs empty files of these names; gives what was refused, and why.
std::vector<std::string> pack(const std::string& archive, const std::vector<std::string>& names) {
    std::vector<std::string> refused;
    OutputFile output(archive);
    GzipWriter gzip(output);
    CpioWriter writer(gzip);
    for (const std::string& name : names) {
        Member member;
        member.name = name;
        member.mode = S_IFREG | 0644;
        try {
            writer.startMember(member);
        } catch (const MemberFailure& failure) {
            refused.push_back(std::to_string(name.size()) + ": " + failure.what());
        }
    }
    writer.finish();
    gzip.finish();
    output.commit();
    return refused;
}

TEST(CpioWriterTest, LongestNameComesBackAndOneByteMoreIsRefused) {
    const TemporaryFolder folder;
    const std::string archive = folder / "archive";
    const std::vector<std::string> names = {"first", longName(262142), longName(262143), "last"};
    EXPECT_EQ(
        pack(archive, names),
        std::vector<std::string>{"262143: a CPIO archive cannot hold a path of more than 262142 bytes"});
    std::vector<std::string> listed;
    KeepingSink sink;
    EXPECT_TRUE(list(
        archive, [&](const MemberDescription& member) { listed.push_back(member.name); }, sink));
    EXPECT_TRUE(listed == (std::vector<std::string>{names[0], names[1], names[3]}));
}

TEST(CpioWriterTest, FileThatItsLengthHasNoRoomForIsRefused) {
    const TemporaryFolder folder;
    OutputFile output(folder / "archive");
    GzipWriter gzip(output);
    CpioWriter writer(gzip);
    Member member;
    member.name = "member";
    member.mode = S_IFREG | 0644;
    member.size = (std::int64_t{1} << 33) - 1;
    EXPECT_NO_THROW(writer.startMember(member));
    member.size = std::int64_t{1} << 33;
    EXPECT_THROW(writer.startMember(member), MemberFailure);
    gzip.finish();
}

TEST(CpioWriterTest, LinksFromOutsideTheTreeAreNoneAndThoseInsideKeepTheirCount) {
    const TemporaryFolder folder;
    writeFile(folder / "D/outside", "x");
    std::filesystem::create_hard_link(folder / "D/outside", folder / "elsewhere");
    writeFile(folder / "D/a", "y");
    std::filesystem::create_hard_link(folder / "D/a", folder / "D/b");
    std::filesystem::create_hard_link(folder / "D/a", folder / "elsewhere too");
    ASSERT_EQ(create(folder / "D", folder / "archive").exitStatus, 0);
    PlainStream stream{InputFile(folder / "archive")};
    CpioReader reader(stream);
    std::string links;
    while (const std::optional<Member> member = reader.next()) {
        links += member->name + " " + std::to_string(member->inode) + " " +
                 std::to_string(member->linkCount) + "\n";
    }
    EXPECT_EQ(links, "D 0 1\nD/a 1 2\nD/b 1 2\nD/outside 0 1\n");
}

TEST(CpioWriterTest, NumbersOfFilesAndTimesFillTheirFields) {
    const TemporaryFolder folder;
    Member member;
    member.name = "member";
    member.mode = S_IFREG | 0644;
    member.inode = 0x123456789;
    member.linkCount = 1000000;
    member.modifiedSeconds = (std::int64_t{1} << 33) + 5;
    {
        OutputFile output(folder / "archive");
        GzipWriter gzip(output);
        CpioWriter writer(gzip);
        writer.startMember(member);
        writer.finish();
        gzip.finish();
        output.commit();
    }
    PlainStream stream{InputFile(folder / "archive")};
    CpioReader reader(stream);
    const std::optional<Member> read = reader.next();
    ASSERT_TRUE(read.has_value());
    EXPECT_EQ(read->device << 18 | read->inode, 0x123456789U);
    EXPECT_EQ(read->linkCount, 0777777U);
    EXPECT_EQ(read->modifiedSeconds, (std::int64_t{1} << 33) - 1);
    EXPECT_FALSE(reader.next().has_value());
}

}  // namespace
