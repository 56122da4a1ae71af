// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Base/ZPKTraceText.h"

namespace {

/// The longest beginning of at most `limit` bytes that ends between characters. Bytes that are no UTF-8 may
/// be cut anywhere.
std::size_t lengthWithin(std::string_view text, std::size_t limit) {
    constexpr std::size_t kMostContinuations = 3;
    for (std::size_t length = limit; length + kMostContinuations >= limit; --length) {
        const bool isWithinCharacter = (static_cast<unsigned char>(text[length]) & 0xC0) == 0x80;
        if (!isWithinCharacter) {
            return length;
        }
    }
    return limit;
}

}  // namespace

ZPKTraceText::ZPKTraceText(std::string_view whole) : m_shown(whole) {
    if (whole.size() > kLongest) {
        m_shown = whole.substr(0, lengthWithin(whole, kLongest));
        m_mark = "...";
    }
}
