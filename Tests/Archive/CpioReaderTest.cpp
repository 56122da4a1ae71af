// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/CpioReader.h"

#include <gtest/gtest.h>

#include "Archive/Failure.h"
#include "Archive/PlainStream.h"
#include "Tests/Archive/HostileArchiveFixture.h"

namespace {

using namespace zpk_archive;
using namespace zpk_test;

/// The names of the members, and then what ended the reading.
std::string namesAndEnd(const std::string& bytes) {
    const TemporaryFolder folder;
    writeFile(folder / "archive", bytes);
    std::string names;
    try {
        PlainStream stream{InputFile(folder / "archive")};
        CpioReader reader(stream);
        while (const std::optional<Member> member = reader.next()) {
            names += member->name.substr(0, 20) + "|";
        }
        reader.finish();
    } catch (const ArchiveFailure& failure) {
        return names + failure.what();
    }
    return names + "end";
}

TEST(CpioReaderTest, DataThatNobodyReadsArePassedOver) {
    const std::vector<RawMember> members = {
        {"one", kFile, std::string(700000, '1')}, {"two", kLink, "text"}, {"three", kFile, "1"}, {"", kFile}};
    EXPECT_EQ(namesAndEnd(makeOdc(members)), "one|two|three||end");
    EXPECT_EQ(namesAndEnd(makeNewc(members)), "one|two|three||end");
}

TEST(CpioReaderTest, OnlyZerosMayFollowTheEndMark) {
    const std::string whole = makeOdc({{"one", kFile, "1"}});
    const std::string secondFollows = "one|a second archive follows the first";
    const std::string bytesFollow = "one|bytes that are no archive's follow the end mark";
    // Blocks of the stream have 256 KiB; what follows may begin in one and end in the next.
    const std::string toBlock(256 * 1024 - whole.size() - 3, '\0');
    EXPECT_EQ(namesAndEnd(whole + std::string(1000000, '\0')), "one|end");
    EXPECT_EQ(namesAndEnd(whole + whole), secondFollows);
    EXPECT_EQ(namesAndEnd(whole + toBlock + makeNewc({})), secondFollows);
    EXPECT_EQ(namesAndEnd(whole + std::string(512, '\0') + "\xc7\x71"), secondFollows);
    EXPECT_EQ(namesAndEnd(whole + "0"), bytesFollow);
    EXPECT_EQ(namesAndEnd(whole + toBlock + "07070"), bytesFollow);
}

TEST(CpioReaderTest, NamesAndLinksOfImpossibleLengthAreNotGathered) {
    std::string longName = makeNewc({{"n", kFile}});
    longName.replace(94, 8, "06000000");
    EXPECT_EQ(namesAndEnd(longName), "the archive is damaged (a name of more than 262142 bytes)");
    EXPECT_EQ(namesAndEnd(makeNewc({{std::string(262142, 'n'), kFile}})), std::string(20, 'n') + "|end");
    EXPECT_EQ(namesAndEnd(makeNewc({{std::string(262143, 'n'), kFile}})),
              "the archive is damaged (a name of more than 262142 bytes)");
    EXPECT_EQ(namesAndEnd(makeOdc({{"l", kLink, std::string(1 << 20, 't')}})), "l|end");
    EXPECT_EQ(namesAndEnd(makeOdc({{"l", kLink, std::string((1 << 20) + 1, 't')}})),
              "the archive is damaged (a symbolic link's text of more than 1 MiB)");
}

TEST(CpioReaderTest, WhereAHeaderIsDueThereIsOne) {
    const std::string damaged = "one|the archive is damaged or ends without its end mark";
    const std::string whole = makeOdc({{"one", kFile, "1"}});
    EXPECT_EQ(namesAndEnd("x" + whole), "not a CPIO archive");
    EXPECT_EQ(namesAndEnd("070707x" + whole), "not a CPIO archive");
    EXPECT_EQ(namesAndEnd(whole.substr(0, 3)), "not a CPIO archive");
    EXPECT_EQ(namesAndEnd(whole.substr(0, 40)), damaged.substr(4));
    const std::size_t second = whole.rfind("070707");
    EXPECT_EQ(namesAndEnd(whole.substr(0, second)), damaged);
    EXPECT_EQ(namesAndEnd(whole.substr(0, second) + "x" + whole.substr(second)), damaged);
    EXPECT_EQ(namesAndEnd(whole.substr(0, second + 60)), damaged);
    EXPECT_EQ(namesAndEnd(whole.substr(0, second + 80)), damaged);
    EXPECT_EQ(namesAndEnd(whole.substr(0, second - 1)), "one|the archive ends in the middle of this member");
}

}  // namespace
