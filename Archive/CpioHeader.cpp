// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/CpioHeader.h"

#include <algorithm>
#include <string_view>

namespace zpk_archive {

namespace {

using Form = CpioHeader::Form;

constexpr std::size_t kPortableSize = 76;
constexpr std::size_t kNewSize = 110;
constexpr std::size_t kBinarySize = 26;
constexpr unsigned kNoDigit = 16;

bool startsWith(std::span<const std::uint8_t> bytes, std::string_view magic) {
    return bytes.size() >= magic.size() &&
           std::equal(magic.begin(), magic.end(), bytes.begin(),
                      [](char left, std::uint8_t right) { return static_cast<std::uint8_t>(left) == right; });
}

unsigned digitOf(std::uint8_t byte) {
    if (byte >= '0' && byte <= '9') {
        return byte - '0';
    }
    const unsigned lower = byte | 0x20U;
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : kNoDigit;
}

/// The numbers of a header written in digits, one after the other.
class DigitReader {
public:
    DigitReader(std::span<const std::uint8_t> bytes, unsigned base) : m_bytes(bytes), m_base(base) {}

    std::uint64_t next(std::size_t digits) {
        std::uint64_t value = 0;
        for (const std::uint8_t byte : m_bytes.first(digits)) {
            const unsigned digit = digitOf(byte);
            m_isGood = m_isGood && digit < m_base;
            value = value * m_base + digit;
        }
        m_bytes = m_bytes.subspan(digits);
        return value;
    }
    std::uint32_t nextShort(std::size_t digits) { return static_cast<std::uint32_t>(next(digits)); }

    bool isGood() const { return m_isGood; }

private:
    std::span<const std::uint8_t> m_bytes;
    unsigned m_base;
    bool m_isGood = true;
};

bool readPortable(std::span<const std::uint8_t> bytes, CpioHeader& header) {
    DigitReader digits(bytes.subspan(CpioHeader::kMagicSize), 8);
    header.device = digits.next(6);
    header.inode = digits.next(6);
    header.mode = digits.nextShort(6);
    digits.next(6);  // Owner and group are not restored.
    digits.next(6);
    header.linkCount = digits.nextShort(6);
    digits.next(6);
    header.modifiedSeconds = static_cast<std::int64_t>(digits.next(11));
    header.nameSize = digits.nextShort(6);
    header.dataSize = digits.next(11);
    return digits.isGood();
}

bool readNew(std::span<const std::uint8_t> bytes, CpioHeader& header) {
    DigitReader digits(bytes.subspan(CpioHeader::kMagicSize), 16);
    header.inode = digits.next(8);
    header.mode = digits.nextShort(8);
    digits.next(8);
    digits.next(8);
    header.linkCount = digits.nextShort(8);
    header.modifiedSeconds = static_cast<std::int64_t>(digits.next(8));
    header.dataSize = digits.next(8);
    header.device = digits.next(8) << 32;
    header.device |= digits.next(8);
    digits.next(8);
    digits.next(8);
    header.nameSize = digits.nextShort(8);
    digits.next(8);
    return digits.isGood();
}

/// Thirteen words of 16 bits; where two make a number, the upper half comes first.
bool readBinary(std::span<const std::uint8_t> bytes, CpioHeader& header) {
    const bool isLittle = header.form == Form::BinaryLittleEndian;
    const auto word = [&](std::size_t index) {
        const std::uint32_t first = bytes[2 * index];
        const std::uint32_t second = bytes[2 * index + 1];
        return isLittle ? second << 8 | first : first << 8 | second;
    };
    header.device = word(1);
    header.inode = word(2);
    header.mode = word(3);
    header.linkCount = word(6);
    header.modifiedSeconds = std::int64_t{word(8)} << 16 | word(9);
    header.nameSize = word(10);
    header.dataSize = std::uint64_t{word(11)} << 16 | word(12);
    return true;
}

std::size_t toMultiple(std::uint64_t size, std::size_t unit) {
    return static_cast<std::size_t>((unit - size % unit) % unit);
}

}  // namespace

std::optional<Form> CpioHeader::formOf(std::span<const std::uint8_t> bytes) {
    using namespace std::string_view_literals;
    for (const auto& [magic, form] : {std::pair{"070707"sv, Form::PortableAscii},
                                      {"070701"sv, Form::NewAscii},
                                      {"070702"sv, Form::NewAsciiWithChecksum},
                                      {"\xc7\x71"sv, Form::BinaryLittleEndian},
                                      {"\x71\xc7"sv, Form::BinaryBigEndian}}) {
        if (startsWith(bytes, magic)) {
            return form;
        }
    }
    return std::nullopt;
}

std::size_t CpioHeader::sizeOf(Form form) {
    switch (form) {
        case Form::PortableAscii:
            return kPortableSize;
        case Form::NewAscii:
        case Form::NewAsciiWithChecksum:
            return kNewSize;
        default:
            return kBinarySize;
    }
}

std::optional<CpioHeader> CpioHeader::parse(Form form, std::span<const std::uint8_t> bytes) {
    CpioHeader header;
    header.form = form;
    bool isGood = false;
    if (bytes.size() < sizeOf(form)) {
        return std::nullopt;
    }
    if (form == Form::PortableAscii) {
        isGood = readPortable(bytes, header);
    } else if (header.isNewAscii()) {
        isGood = readNew(bytes, header);
    } else {
        isGood = readBinary(bytes, header);
    }
    return isGood ? std::optional(header) : std::nullopt;
}

std::size_t CpioHeader::namePadding() const {
    if (isNewAscii()) {
        return toMultiple(kNewSize + nameSize, 4);
    }
    return form == Form::PortableAscii ? 0 : toMultiple(nameSize, 2);
}

std::size_t CpioHeader::dataPadding() const {
    if (isNewAscii()) {
        return toMultiple(dataSize, 4);
    }
    return form == Form::PortableAscii ? 0 : toMultiple(dataSize, 2);
}

}  // namespace zpk_archive
