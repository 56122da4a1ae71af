// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

// What each code stands for is tested by encodings_test.py.

#include "Base/ZPKTextDecoder.h"

#include <gtest/gtest.h>

#include <string>

namespace {

constexpr const char* kRefused = "refused";
constexpr const char* kCutShort = "cut short";

/// `bytes` in pieces of `size`.
std::string decoded(std::string_view encoding, std::string_view bytes, std::size_t size = SIZE_MAX) {
    const std::unique_ptr<ZPKTextDecoder> decoder = ZPKTextDecoder::forEncoding(encoding);
    if (decoder == nullptr) {
        return "unknown";
    }
    std::string text;
    for (; !bytes.empty(); bytes.remove_prefix(std::min(size, bytes.size()))) {
        if (!decoder->decode(bytes.substr(0, size), text)) {
            return kRefused;
        }
    }
    return decoder->isBetweenCharacters() ? text : kCutShort;
}

TEST(ZPKTextDecoderTest, NamesDoNotDependOnCapitalsAndSigns) {
    for (const char* name : {"Shift_JIS", "shift-jis", "SHIFTJIS", "MS_Kanji", "csShiftJIS"}) {
        EXPECT_EQ(decoded(name, "\x83\x5C"), "\u30BD") << name;
    }
    for (const char* name : {"windows-1252", "CP1252", "Windows 1252"}) {
        EXPECT_EQ(decoded(name, "\x80"), "\u20AC") << name;
    }
}

TEST(ZPKTextDecoderTest, WhatIsNoneOfTheseIsUnknown) {
    for (const char* name : {"", "-", "UTF-8", "UTF-16", "UTF-7", "UTF-32", "ISO-2022-JP", "IBM037",
                             "Shift_JIS2", "Shift_JI", "Big5-HKSCS", "klingon", "\u0130BM437"}) {
        EXPECT_EQ(ZPKTextDecoder::forEncoding(name), nullptr) << name;
    }
}

struct Row {
    const char* encoding;
    const char* bytes;
    const char* text;
};

class ZPKTextDecoderTextTest : public ::testing::TestWithParam<Row> {};

TEST_P(ZPKTextDecoderTextTest, PiecesOfEachSizeGiveTheSame) {
    const Row& row = GetParam();
    for (std::size_t size = 1; size <= 8; ++size) {
        EXPECT_EQ(decoded(row.encoding, row.bytes, size), row.text) << size;
    }
    EXPECT_EQ(decoded(row.encoding, row.bytes), row.text);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, ZPKTextDecoderTextTest,
    ::testing::Values(Row{"Shift_JIS", "", ""},
                      Row{"KOI8-R", "\xF0\xD2\xC9\xD7\xC5\xD4", "\u041F\u0440\u0438\u0432\u0435\u0442"},
                      Row{"Shift_JIS", "C:\\\x83\x5C\x83\x74\x83\x67\\\x95\x5C~\xB1",
                          "C:\\\u30BD\u30D5\u30C8\\\u8868~\uFF71"},
                      Row{"windows-31J", "\x87\x40 \xFB\xFC \x81\x60\x93\xFA", "\u2460 \u9AD9 \uFF5E\u65E5"},
                      Row{"EUC-JP", "\xC6\xFC\xCB\xDC\x8E\xB1\x8F\xB0\xA1", "\u65E5\u672C\uFF71\u4E02"},
                      Row{"EUC-KR", "\xC7\xD1\xB1\xDB a", "\uD55C\uAE00 a"},
                      Row{"windows-949", "\x8C\x63", "\uB620"},
                      Row{"Big5", "\xA4\xA4\xA4\xE5\xA5\x5C", "\u4E2D\u6587\u529F"},
                      Row{"GB18030", "\xD6\xD0\xCE\xC4 \x81\x30\x81\x30\x94\x39\xDA\x33",
                          "\u4E2D\u6587 \u0080\U0001F4A9"}));

class ZPKTextDecoderFaultTest : public ::testing::TestWithParam<Row> {};

TEST_P(ZPKTextDecoderFaultTest, NoPieceHidesIt) {
    const Row& row = GetParam();
    for (const std::string before : {"", "a", "abc"}) {
        for (std::size_t size = 1; size <= 8; ++size) {
            EXPECT_EQ(decoded(row.encoding, before + row.bytes, size), row.text) << before << " " << size;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(
    Faults, ZPKTextDecoderFaultTest,
    ::testing::Values(Row{"windows-1252", "\x81", kRefused}, Row{"Shift_JIS", "\x83", kCutShort},
                      Row{"Shift_JIS", "\x83\n\x83", kRefused}, Row{"Shift_JIS", "\x83<", kRefused},
                      Row{"Shift_JIS", "\x83\x7F", kRefused}, Row{"Shift_JIS", "\x80", kRefused},
                      Row{"Shift_JIS", "\xA0", kRefused}, Row{"Shift_JIS", "\xFD\x40", kRefused},
                      Row{"Shift_JIS", "\xFA\x40", kRefused}, Row{"Shift_JIS", "\x87\x40", kRefused},
                      Row{"windows-31J", "\xFC\x4C", kRefused}, Row{"windows-31J", "\xFC\xFC", kRefused},
                      Row{"EUC-JP", "\x8E", kCutShort}, Row{"EUC-JP", "\x8F\xB0", kCutShort},
                      Row{"EUC-JP", "\x8E<", kRefused}, Row{"EUC-JP", "\x8F<b", kRefused},
                      Row{"EUC-JP", "\x8F\xB0>", kRefused}, Row{"EUC-JP", "\xC6>", kRefused},
                      Row{"EUC-JP", "\xFF\xA1", kRefused}, Row{"EUC-KR", "\xC7", kCutShort},
                      Row{"EUC-KR", "\xB0\x41", kRefused}, Row{"EUC-KR", "\x8C\x63", kRefused},
                      Row{"windows-949", "\xC7\x5B", kRefused}, Row{"windows-949", "\xFF\x41", kRefused},
                      Row{"Big5", "\xA4", kCutShort}, Row{"Big5", "\xA4<", kRefused},
                      Row{"Big5", "\xA4\x80", kRefused}, Row{"Big5", "\xFA\x40", kRefused},
                      Row{"GB18030", "\xD6", kCutShort}, Row{"GB18030", "\x81\x30", kCutShort},
                      Row{"GB18030", "\x81\x30\x81", kCutShort}, Row{"GB18030", "\x81\x30<", kRefused},
                      Row{"GB18030", "\x81\x30\x81<", kRefused}, Row{"GB18030", "\x84\x31\xA5\x30", kRefused},
                      Row{"GB18030", "\xE3\x32\x9A\x36", kRefused},
                      Row{"GB18030", "\xFE\x39\xFE\x39", kRefused}, Row{"GB18030", "\xFF\x40", kRefused}));

TEST(ZPKTextDecoderTest, WhatStandsBeforeAFaultIsThere) {
    std::string text;
    EXPECT_FALSE(ZPKTextDecoder::forEncoding("EUC-KR")->decode("a\xC7\xD1\xFF", text));
    EXPECT_EQ(text, "a\uD55C");
}

}  // namespace
