// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/CpioHeader.h"

#include <gtest/gtest.h>

#include <string>

#include "Tests/Archive/ArchiveFixture.h"

namespace {

using zpk_archive::CpioHeader;
using Form = CpioHeader::Form;

std::span<const std::uint8_t> bytesOf(const std::string& text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

std::string headerOf(void (*append)(std::string&, const zpk_test::RawMember&)) {
    std::string bytes;
    append(bytes, {"a name", 0120644, "the data", 0x3ffff, 3, UINT64_MAX, 1234567890});
    return bytes;
}

void expectFields(const std::optional<CpioHeader>& header) {
    ASSERT_TRUE(header.has_value());
    EXPECT_EQ(header->device, 0U);
    EXPECT_EQ(header->inode, 0x3ffffU);
    EXPECT_EQ(header->mode, 0120644U);
    EXPECT_EQ(header->linkCount, 3U);
    EXPECT_EQ(header->modifiedSeconds, 1234567890);
    EXPECT_EQ(header->nameSize, 7U);
    EXPECT_EQ(header->dataSize, 8U);
}

TEST(CpioHeaderTest, ReadsTheFormsWithDigits) {
    const std::string portable = headerOf(zpk_test::appendOdc);
    EXPECT_EQ(CpioHeader::formOf(bytesOf(portable)), Form::PortableAscii);
    expectFields(CpioHeader::parse(Form::PortableAscii, bytesOf(portable)));
    std::string newAscii = headerOf(zpk_test::appendNewc);
    EXPECT_EQ(CpioHeader::formOf(bytesOf(newAscii)), Form::NewAscii);
    const auto header = CpioHeader::parse(Form::NewAscii, bytesOf(newAscii));
    expectFields(header);
    EXPECT_EQ(header->namePadding(), 3U);
    EXPECT_EQ(header->dataPadding(), 0U);
    newAscii[5] = '2';
    EXPECT_EQ(CpioHeader::formOf(bytesOf(newAscii)), Form::NewAsciiWithChecksum);
}

TEST(CpioHeaderTest, EveryDigitOfADeviceNumberCounts) {
    std::string portable = headerOf(zpk_test::appendOdc);
    portable.replace(6, 6, "765432");
    EXPECT_EQ(CpioHeader::parse(Form::PortableAscii, bytesOf(portable))->device, 0765432U);
    std::string newAscii = headerOf(zpk_test::appendNewc);
    newAscii.replace(62, 16, "fedcba9876543210");
    EXPECT_EQ(CpioHeader::parse(Form::NewAscii, bytesOf(newAscii))->device, 0xfedcba9876543210U);
}

TEST(CpioHeaderTest, ReadsTheBinaryFormsOfBothByteOrders) {
    // Magic, device, inode, mode, owner, group, links, device, time, time, name, size, size.
    const std::uint16_t words[] = {070707, 1, 2, 0100644, 0, 0, 2, 0, 0x4996, 0x02d2, 7, 1, 3};
    for (const bool isLittle : {true, false}) {
        std::string bytes;
        for (const std::uint16_t word : words) {
            bytes += static_cast<char>(isLittle ? word & 0xff : word >> 8);
            bytes += static_cast<char>(isLittle ? word >> 8 : word & 0xff);
        }
        const Form form = isLittle ? Form::BinaryLittleEndian : Form::BinaryBigEndian;
        ASSERT_EQ(CpioHeader::formOf(bytesOf(bytes)), form);
        const auto header = CpioHeader::parse(form, bytesOf(bytes));
        ASSERT_TRUE(header.has_value());
        EXPECT_EQ(header->modifiedSeconds, 1234567890);
        EXPECT_EQ(header->dataSize, 65539U);
        EXPECT_EQ(header->device, 1U);
        EXPECT_EQ(header->inode, 2U);
        EXPECT_EQ(header->namePadding(), 1U);
        EXPECT_EQ(header->dataPadding(), 1U);
    }
}

TEST(CpioHeaderTest, WhatIsNoDigitIsNoHeader) {
    for (const auto& [append, form] :
         {std::pair{&zpk_test::appendOdc, Form::PortableAscii}, {&zpk_test::appendNewc, Form::NewAscii}}) {
        const std::string good = headerOf(append);
        for (std::size_t at = CpioHeader::kMagicSize; at < CpioHeader::sizeOf(form); ++at) {
            for (const char wrong : {'/', ':', 'g', ' ', '\0', '\x90', form == Form::NewAscii ? '@' : '8'}) {
                std::string bad = good;
                bad[at] = wrong;
                EXPECT_FALSE(CpioHeader::parse(form, bytesOf(bad))) << at << wrong;
            }
        }
        // What lies behind the bytes at hand would complete it.
        for (std::size_t size = CpioHeader::kMagicSize; size < CpioHeader::sizeOf(form); ++size) {
            EXPECT_FALSE(CpioHeader::parse(form, bytesOf(good).first(size))) << size;
        }
    }
    for (const char* const text : {"", "07070", "070708", "garbage", "\xc7", "\x71"}) {
        EXPECT_FALSE(CpioHeader::formOf(bytesOf(text))) << text;
    }
}

}  // namespace
