// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "RunFile/ZPKProgramFilter.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "Tests/Support/TemporaryFolder.h"

namespace {

const std::string kMark =
    "\x7f"
    "ELF";

std::string packed(std::string bytes) {
    ZPKProgramFilter::pack(bytes.data(), bytes.size());
    return bytes;
}

std::string unpacked(std::string bytes) {
    ZPKProgramFilter::unpack(bytes.data(), bytes.size());
    return bytes;
}

/// A program of calls to one place: E8, then the distance from behind the call.
std::string callsTo(std::int32_t place, std::size_t count) {
    std::string bytes = kMark + std::string(60, '\0');
    for (std::size_t index = 0; index < count; ++index) {
        bytes += '\xe8';
        const std::int32_t distance = place - static_cast<std::int32_t>(bytes.size());
        bytes.append(reinterpret_cast<const char*>(&distance), sizeof(distance));
    }
    return bytes;
}

TEST(ZPKProgramFilterTest, CallsToOnePlaceBecomeAlike) {
    for (const std::int32_t place : {0, 64, 100000, -5}) {
        const std::string program = callsTo(place, 10);
        const std::string changed = packed(program);
        const std::string first = changed.substr(64, 5);
        for (std::size_t at = 64; at < changed.size(); at += 5) {
            EXPECT_EQ(changed.substr(at, 5), first) << place << " at " << at;
        }
        EXPECT_EQ(unpacked(changed), program);
    }
}

// Many bytes are looked at together, so an instruction may begin in one step and end in the next, or lie
// where the last step is shorter.
TEST(ZPKProgramFilterTest, EveryInstructionIsFoundAtEveryPlace) {
    std::vector<std::string> instructions{"\xe8", "\xe9"};
    for (int kind = 0; kind < 16; ++kind) {
        instructions.push_back(std::string("\x0f") + static_cast<char>(0x80 + kind));
    }
    for (const char first : {'\x8d', '\x8b', '\x89', '\x39', '\x3b', '\xff'}) {
        for (int kind = 0; kind < 8; ++kind) {
            instructions.push_back(std::string(1, first) + static_cast<char>(0x05 + 8 * kind));
        }
    }
    for (const std::string& instruction : instructions) {
        for (std::size_t before = 0; before < 40; ++before) {
            const std::string program = kMark + std::string(60 + before, '\0') + instruction +
                                        std::string(4, '\0') + std::string(before % 20, '\0');
            EXPECT_NE(packed(program), program) << testing::PrintToString(instruction) << " at " << before;
            EXPECT_EQ(unpacked(packed(program)), program);
        }
    }
}

TEST(ZPKProgramFilterTest, ARealProgramChangesAndComesBack) {
    const std::string program = zpk_test::readFile("/proc/self/exe");
    const std::string changed = packed(program);
    EXPECT_TRUE(changed != program);
    EXPECT_TRUE(unpacked(changed) == program);
}

// Bytes that are no program at all, of few kinds, so that beginnings of instructions meet, overlap and hold
// each other's, and end at the file's end.
TEST(ZPKProgramFilterTest, AnyBytesComeBack) {
    const unsigned char kinds[] = {0xE8, 0xE9, 0x0F, 0x80, 0x8D, 0x8B, 0x05,
                                   0x3D, 0xFF, 0x00, 0xFE, 0x01, 0x02};
    std::mt19937 random(7);
    for (int round = 0; round < 20000; ++round) {
        std::string bytes = kMark + std::string(60, '\0');
        for (std::size_t length = random() % 40; length > 0; --length) {
            bytes += static_cast<char>(kinds[random() % std::size(kinds)]);
        }
        ASSERT_EQ(unpacked(packed(bytes)), bytes) << round;
        ASSERT_EQ(packed(unpacked(bytes)), bytes) << round;
    }
}

TEST(ZPKProgramFilterTest, WhatIsNoProgramStays) {
    std::string text = callsTo(1000, 10);
    text[0] = 'x';
    EXPECT_EQ(packed(text), text);
    for (std::size_t size = 0; size < 70; ++size) {
        const std::string start = callsTo(1000, 2).substr(0, size);
        EXPECT_EQ(unpacked(packed(start)), start) << size;
    }
}

}  // namespace
