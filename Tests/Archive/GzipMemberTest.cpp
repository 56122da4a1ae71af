// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/GzipMember.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "Archive/Failure.h"
#include "Archive/InputFile.h"
#include "Tests/Support/TemporaryFolder.h"

namespace {

using namespace zpk_archive;
using zpk_test::TemporaryFolder;

TEST(GzipMemberTest, StatedSizesAreReadBackAndIncredibleOnesIgnored) {
    TemporaryFolder folder;
    struct Row {
        GzipMemberSizes sizes;
        bool believed;
    };
    for (const Row& row : std::vector<Row>{{{100, 200}, true},
                                           {{kGzipMemberPackedLimit, kGzipMemberPlainSize}, true},
                                           {{8, 0}, false},
                                           {{kGzipMemberPackedLimit + 1, 1}, false},
                                           {{100, kGzipMemberPlainSize + 1}, false},
                                           {{0xffffffffU, 0xffffffffU}, false}}) {
        auto header = makeGzipMemberHeader(row.sizes);
        zpk_test::writeFile(folder / "h", {reinterpret_cast<const char*>(header.data()), header.size()});
        InputFile input(folder / "h");
        std::optional<GzipMemberSizes> sizes = readGzipMemberHeader(input);
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
          start + '\x08' + rest + std::string(300000, 'n'),
          // An end there would be, but far beyond what a header may have.
          start + '\x08' + rest + std::string(300000, 'n') + '\0', start + '\x02' + rest + "xx"}) {
        zpk_test::writeFile(folder / "h", header);
        InputFile input(folder / "h");
        EXPECT_THROW(readGzipMemberHeader(input), ArchiveFailure);
    }
}

}  // namespace
