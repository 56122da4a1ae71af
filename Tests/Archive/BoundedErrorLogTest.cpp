// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/BoundedErrorLog.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

namespace {

using zpk_archive::BoundedErrorLog;

/// What a log writes while `use` has it.
std::string written(const std::function<void(BoundedErrorLog&)>& use) {
    int ends[2];
    EXPECT_EQ(::pipe(ends), 0);
    {
        BoundedErrorLog log(ends[1]);
        use(log);
    }
    ::close(ends[1]);
    std::string text(70000, '\0');
    const ssize_t got = ::read(ends[0], text.data(), text.size());
    ::close(ends[0]);
    EXPECT_GE(got, 0);
    text.resize(static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
    return text;
}

std::string lineFor(const std::string& name) {
    return written([&](BoundedErrorLog& log) { log.error(name, "reason"); });
}

TEST(BoundedErrorLogTest, SaysNothingWhenAllIsWell) {
    EXPECT_EQ(written([](BoundedErrorLog&) {}), "");
}

TEST(BoundedErrorLogTest, WritesOneLineForEachErrorAndWarning) {
    EXPECT_EQ(written([](BoundedErrorLog& log) {
                  log.error("a", "is gone");
                  log.warning("b", "is odd");
              }),
              "ditto: a: is gone\nditto: b: warning: is odd\n");
}

TEST(BoundedErrorLogTest, StaysBelowFourThousandBytesAndCountsTheRest) {
    const std::string text = written([](BoundedErrorLog& log) {
        for (int i = 0; i < 1000; ++i) {
            log.error("member " + std::to_string(i), std::string(100, 'r'));
        }
    });
    EXPECT_LT(text.size(), 4000U);
    const auto lines = static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
    EXPECT_GT(lines, 20U);
    EXPECT_TRUE(text.starts_with("ditto: member 0: rrr"));
    EXPECT_TRUE(text.ends_with("\nditto: and " + std::to_string(1000 - (lines - 1)) + " more errors\n"))
        << text;
}

TEST(BoundedErrorLogTest, ShortLineAfterOneThatWasLeftOutIsLeftOutToo) {
    const std::string text = written([](BoundedErrorLog& log) {
        for (int i = 0; i < 40; ++i) {
            log.error("member " + std::to_string(i), std::string(100, 'r'));
        }
        log.error("s", "r");
    });
    EXPECT_EQ(text.find("ditto: s: r\n"), std::string::npos) << text;
    EXPECT_TRUE(text.ends_with(" more errors\n"));
}

TEST(BoundedErrorLogTest, EscapesInNamesAndReasonsWhatATerminalWouldObey) {
    struct Row {
        std::string name;
        std::string printed;
    };
    for (const Row& row : std::vector<Row>{{"plain name", "plain name"},
                                           {"a\nb\tc", "a\\nb\\tc"},
                                           {"\x1b[31m", "\\x1b[31m"},
                                           {"\x7f", "\\x7f"},
                                           {"back\\slash", "back\\\\slash"},
                                           {"gr\xc3\xbc\xc3\x9f", "gr\xc3\xbc\xc3\x9f"},
                                           {"\xe4\xb8\xad", "\xe4\xb8\xad"},
                                           {"\xf0\x9f\x98\x80", "\xf0\x9f\x98\x80"},
                                           {"\xff\xfe", "\\xff\\xfe"},
                                           {"\xc0\xaf", "\\xc0\\xaf"},
                                           {"\xe0\x80\xaf", "\\xe0\\x80\\xaf"},
                                           {"\xed\xa0\x80", "\\xed\\xa0\\x80"},
                                           {"\xf4\x90\x80\x80", "\\xf4\\x90\\x80\\x80"},
                                           {"\xc2\x9b", "\\xc2\\x9b"},
                                           {"\xe2\x80\xae", "\\xe2\\x80\\xae"},
                                           {"\xe2\x81\xa6", "\\xe2\\x81\\xa6"},
                                           {"\xe2\x80\x8f", "\\xe2\\x80\\x8f"},
                                           {"\xe4\xb8", "\\xe4\\xb8"}}) {
        EXPECT_EQ(lineFor(row.name), "ditto: " + row.printed + ": reason\n");
        EXPECT_EQ(written([&](BoundedErrorLog& log) { log.warning("n", row.name); }),
                  "ditto: n: warning: " + row.printed + "\n");
    }
}

TEST(BoundedErrorLogTest, CutsWhatIsLongerThanOneHundredAndSixtyBytes) {
    const std::string longest(160, 'a');
    EXPECT_EQ(lineFor(longest), "ditto: " + longest + ": reason\n");
    EXPECT_EQ(lineFor(longest + "a"), "ditto: " + longest + "...: reason\n");
    EXPECT_EQ(lineFor(std::string(100, '\x01')).size(), std::string("ditto: : reason\n").size() + 163);
}

}  // namespace
