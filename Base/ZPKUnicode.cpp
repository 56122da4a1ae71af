// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Base/ZPKUnicode.h"

namespace {

constexpr char32_t kReplacementCharacter = 0xFFFD;
constexpr char32_t kLastCodePoint = 0x10FFFF;

enum class ByteOrder { Big, Little };

char32_t unitAt(std::string_view bytes, std::size_t at, ByteOrder order) {
    const auto first = static_cast<unsigned char>(bytes[at]);
    const auto second = static_cast<unsigned char>(bytes[at + 1]);
    return order == ByteOrder::Big ? static_cast<char32_t>(first << 8 | second)
                                   : static_cast<char32_t>(second << 8 | first);
}

std::optional<std::string> utf8FromUTF16(std::string_view bytes, ByteOrder order) {
    if (bytes.size() % 2 != 0) {
        return std::nullopt;
    }
    std::string text;
    text.reserve(bytes.size());
    for (std::size_t at = 0; at < bytes.size(); at += 2) {
        char32_t codePoint = unitAt(bytes, at, order);
        if (ZPKUnicode::isHighSurrogate(codePoint) && at + 2 < bytes.size()) {
            const char32_t low = unitAt(bytes, at + 2, order);
            if (ZPKUnicode::isLowSurrogate(low)) {
                codePoint = ZPKUnicode::joinSurrogates(codePoint, low);
                at += 2;
            }
        }
        ZPKUnicode::append(text, codePoint);
    }
    return text;
}

/// Length of the sequence that starts with `first`; 0 for a byte that starts none.
std::size_t sequenceLength(unsigned char first) {
    if (first < 0x80) {
        return 1;
    }
    if (first >= 0xC2 && first < 0xE0) {
        return 2;
    }
    if (first >= 0xE0 && first < 0xF0) {
        return 3;
    }
    return first >= 0xF0 && first < 0xF5 ? 4 : 0;
}

/// The second byte is where overlong forms, surrogates and values beyond the last one show.
bool isSecondByte(unsigned char first, unsigned char second) {
    switch (first) {
        case 0xE0:
            return second >= 0xA0 && second < 0xC0;
        case 0xED:
            return second >= 0x80 && second < 0xA0;
        case 0xF0:
            return second >= 0x90 && second < 0xC0;
        case 0xF4:
            return second >= 0x80 && second < 0x90;
        default:
            return second >= 0x80 && second < 0xC0;
    }
}

bool isSequence(std::string_view sequence) {
    const auto byte = [sequence](std::size_t at) { return static_cast<unsigned char>(sequence[at]); };
    if (sequence.size() > 1 && !isSecondByte(byte(0), byte(1))) {
        return false;
    }
    for (std::size_t at = 2; at < sequence.size(); ++at) {
        if (byte(at) < 0x80 || byte(at) >= 0xC0) {
            return false;
        }
    }
    return true;
}

}  // namespace

std::optional<std::string> ZPKUnicode::utf8FromMarkedText(std::string_view bytes) {
    if (bytes.starts_with("\xFE\xFF")) {
        return utf8FromUTF16(bytes.substr(2), ByteOrder::Big);
    }
    if (bytes.starts_with("\xFF\xFE")) {
        return utf8FromUTF16(bytes.substr(2), ByteOrder::Little);
    }
    if (bytes.starts_with("\xEF\xBB\xBF")) {
        bytes.remove_prefix(3);
    }
    return isUTF8(bytes) ? std::optional(std::string(bytes)) : std::nullopt;
}

void ZPKUnicode::append(std::string& text, char32_t codePoint) {
    if (isHighSurrogate(codePoint) || isLowSurrogate(codePoint) || codePoint > kLastCodePoint) {
        codePoint = kReplacementCharacter;
    }
    const auto trailing = [codePoint](unsigned int shift) {
        return static_cast<char>(0x80 | (codePoint >> shift & 0x3F));
    };
    if (codePoint < 0x80) {
        text += static_cast<char>(codePoint);
    } else if (codePoint < 0x800) {
        text += static_cast<char>(0xC0 | codePoint >> 6);
        text += trailing(0);
    } else if (codePoint < 0x10000) {
        text += static_cast<char>(0xE0 | codePoint >> 12);
        text += trailing(6);
        text += trailing(0);
    } else {
        text += static_cast<char>(0xF0 | codePoint >> 18);
        text += trailing(12);
        text += trailing(6);
        text += trailing(0);
    }
}

std::size_t ZPKUnicode::decode(std::string_view text, char32_t& outCharacter) {
    if (text.empty()) {
        return 0;
    }
    const auto first = static_cast<unsigned char>(text.front());
    const std::size_t length = sequenceLength(first);
    if (length == 0 || length > text.size() || !isSequence(text.substr(0, length))) {
        return 0;
    }
    // The lead byte of a sequence of n bytes holds 7 - n bits, that of a single byte all seven.
    outCharacter = length == 1 ? first : first & (0x7FU >> length);
    for (std::size_t at = 1; at < length; ++at) {
        outCharacter = outCharacter << 6 | (static_cast<unsigned char>(text[at]) & 0x3FU);
    }
    return length;
}

std::size_t ZPKUnicode::utf8Length(std::string_view bytes) {
    std::size_t length = 0;
    char32_t character = 0;
    while (const std::size_t step = decode(bytes.substr(length), character)) {
        length += step;
    }
    return length;
}
