// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include <unistd.h>

#include <cstring>
#include <thread>

#include "Archive/AppleDouble.h"
#include "Archive/BlockPipeline.h"
#include "Archive/Failure.h"
#include "Archive/GzipMember.h"
#include "Archive/InputFile.h"
#include "Archive/MemberName.h"
#include "Tests/Archive/ArchiveFixture.h"

namespace {

using namespace zpk_archive;
using zpk_test::TemporaryFolder;

TEST(MemberNameTest, SplitsWhatStaysInsideAndRefusesTheRest) {
    struct Good {
        const char* name;
        std::vector<std::string> components;
    };
    for (const Good& row : std::vector<Good>{{"a", {"a"}},
                                             {"a/b", {"a", "b"}},
                                             {"./a//b/", {"a", "b"}},
                                             {".", {}},
                                             {"./", {}},
                                             {"...", {"..."}},
                                             {"..a/b..", {"..a", "b.."}},
                                             {"\\x", {"\\x"}},
                                             {"C:x", {"C:x"}},
                                             {"....//", {"...."}}}) {
        EXPECT_EQ(splitMemberName(row.name), row.components) << row.name;
    }
    for (const std::string& name :
         {std::string(), std::string("/"), std::string("/x"), std::string("//x"), std::string(".."),
          std::string("../x"), std::string("a/../b"), std::string("a/../../b"), std::string(".//../x"),
          std::string("a/.."), std::string("a/../"), std::string(256, 'n'), "a/" + std::string(70000, 'n')}) {
        EXPECT_THROW(splitMemberName(name), MemberFailure) << name.substr(0, 20);
    }
}

TEST(AppleDoubleTest, EveryKindOfAttributeComesBack) {
    for (const AttributeMap& attributes : std::vector<AttributeMap>{
             {},
             {{kFinderInfoName, std::string(32, 'f')}},
             {{kFinderInfoName, std::string(32, '\0')}},
             {{kFinderInfoName, "short"}},
             {{kResourceForkName, "fork"}},
             {{kResourceForkName, ""}},
             {{"a", ""}},
             {{"a", "1"}, {"bb", "22"}, {"ccc", "333"}, {std::string(250, 'n'), std::string(65536, 'v')}},
             {{kFinderInfoName, std::string(32, 'f')},
              {kResourceForkName, std::string(1000, 'r')},
              {"x", "y"}}}) {
        std::optional<AttributeMap> decoded = decodeAppleDouble(encodeAppleDouble(attributes));
        ASSERT_TRUE(decoded.has_value());
        EXPECT_EQ(*decoded, attributes);
    }
}

TEST(AppleDoubleTest, LayoutIsThatOfTheFormat) {
    std::string bytes = encodeAppleDouble({{"ab", "value"}, {kResourceForkName, "fork"}});
    auto number = [&](std::size_t at) {
        std::uint32_t value = 0;
        for (std::size_t i = at; i < at + 4; ++i) {
            value = value << 8 | static_cast<unsigned char>(bytes[i]);
        }
        return value;
    };
    EXPECT_EQ(number(0), 0x00051607U);
    EXPECT_EQ(number(4), 0x00020000U);
    EXPECT_EQ(number(24) >> 16, 2U);
    EXPECT_EQ(number(26), 9U);
    EXPECT_EQ(number(30), 50U);
    EXPECT_EQ(number(38), 2U);
    EXPECT_EQ(bytes.substr(84, 4), "ATTR");
    EXPECT_EQ(number(92), number(30) + number(34));  // The table's end is the Finder info entry's.
    EXPECT_EQ(number(96), number(120));              // The first value lies where the data start.
    EXPECT_EQ(bytes.substr(131, 3), std::string("ab\0", 3));
    EXPECT_EQ(bytes.substr(number(120), number(124)), "value");
    EXPECT_EQ(bytes.substr(number(42), number(46)), "fork");
}

TEST(AppleDoubleTest, TruncationAndFlippedBytesNeverReadOutside) {
    const std::string good =
        encodeAppleDouble({{"name", "value"}, {"other", "x"}, {kResourceForkName, "fork"}});
    for (std::size_t size = 0; size < good.size(); ++size) {
        EXPECT_FALSE(decodeAppleDouble(good.substr(0, size)).has_value()) << size;
    }
    for (std::size_t at = 0; at < good.size(); ++at) {
        for (int value : {0x00, 0x01, 0x7f, 0x80, 0xff}) {
            std::string bad = good;
            bad[at] = static_cast<char>(value);
            decodeAppleDouble(bad);
        }
    }
}

TEST(AppleDoubleTest, ValuesThatTogetherExceedTheFileAreRefused) {
    std::string bytes = encodeAppleDouble({{"a", "1"}, {"b", std::string(100, 'v')}});
    // The first entry's value is made to cover the second's place as well: offset 50 + 36 + ..., length 200.
    std::string bad = bytes;
    bad[120 + 6] = 0;
    bad[120 + 7] = static_cast<char>(bytes.size() & 0xff);
    bad[120 + 2] = 0;
    bad[120 + 3] = 0;
    EXPECT_FALSE(decodeAppleDouble(bad).has_value());
}

TEST(GzipMemberTest, StatedSizesAreReadBackAndIncredibleOnesIgnored) {
    TemporaryFolder folder;
    struct Row {
        MemberSizes sizes;
        bool believed;
    };
    for (const Row& row : std::vector<Row>{{{100, 200}, true},
                                           {{kMemberPackedLimit, kMemberPlainSize}, true},
                                           {{8, 0}, false},
                                           {{kMemberPackedLimit + 1, 1}, false},
                                           {{100, kMemberPlainSize + 1}, false},
                                           {{0xffffffffU, 0xffffffffU}, false}}) {
        auto header = makeMemberHeader(row.sizes);
        zpk_test::writeFile(folder / "h", {reinterpret_cast<const char*>(header.data()), header.size()});
        InputFile input(folder / "h");
        std::optional<MemberSizes> sizes = readMemberHeader(input);
        ASSERT_EQ(sizes.has_value(), row.believed) << row.sizes.packed;
        if (sizes) {
            EXPECT_EQ(sizes->packed, row.sizes.packed);
            EXPECT_EQ(sizes->plain, row.sizes.plain);
        }
    }
}

TEST(GzipMemberTest, DamagedAndEndlessHeadersAreRefused) {
    TemporaryFolder folder;
    const std::string start("\x1f\x8b\x08", 3);
    const std::string rest(6, '\0');
    for (const std::string& header :
         {start, start + '\xe0' + rest, std::string("\x1f\x8b\x07\0", 4) + rest,
          start + '\x04' + rest + "\xff\xff", start + '\x08' + rest + "name without end",
          start + '\x08' + rest + std::string(300000, 'n'), start + '\x02' + rest + "xx"}) {
        zpk_test::writeFile(folder / "h", header);
        InputFile input(folder / "h");
        EXPECT_THROW(readMemberHeader(input), ArchiveFailure);
    }
}

TEST(BlockPipelineTest, ConsumerSeesTheProducersOrder) {
    BlockPipeline pipeline(4);
    std::vector<std::jthread> workers;
    for (int i = 0; i < 3; ++i) {
        workers.emplace_back([&] {
            while (BlockPipeline::Block* block = pipeline.takeWork()) {
                if (block->plain.size % 3 == 0) {
                    std::this_thread::yield();
                }
                block->packed.size = block->plain.size * 2;
                pipeline.complete(*block);
            }
        });
    }
    std::jthread producer([&] {
        for (std::size_t i = 1; i <= 1000; ++i) {
            BlockPipeline::Block* block = pipeline.acquire();
            block->plain.size = i;
            pipeline.submit(*block);
        }
        pipeline.finish("the end");
    });
    for (std::size_t i = 1; i <= 1000; ++i) {
        EXPECT_EQ(pipeline.next()->packed.size, 2 * i);
    }
    EXPECT_THROW(pipeline.next(), ArchiveFailure);
}

TEST(BlockPipelineTest, StopEndsEveryWait) {
    BlockPipeline pipeline(1);
    std::jthread producer([&] {
        while (BlockPipeline::Block* block = pipeline.acquire()) {
            pipeline.complete(*block);
        }
    });
    std::jthread worker([&] { EXPECT_EQ(pipeline.takeWork(), nullptr); });
    EXPECT_NE(pipeline.next(), nullptr);
    pipeline.stop();
    EXPECT_EQ(pipeline.next(), nullptr);
}

}  // namespace
