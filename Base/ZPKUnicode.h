// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/// Conversions to UTF-8. May be called from any thread.
class ZPKUnicode {
public:
    ZPKUnicode() = delete;

    /// The text of a file in UTF-8 without a byte order mark: UTF-8, with or without its mark, or
    /// UTF-16 in either order after its mark. Nothing when the bytes are no such text.
    static std::optional<std::string> utf8FromMarkedText(std::string_view bytes);

    /// Appends a code point. What is no character (a surrogate, or beyond the last one) becomes U+FFFD.
    static void append(std::string& text, char32_t codePoint);

    static bool isUTF8(std::string_view bytes) { return utf8Length(bytes) == bytes.size(); }

    /// How many bytes at the start are UTF-8.
    static std::size_t utf8Length(std::string_view bytes);

    /// The character at the start of `text` and its length in bytes; 0 when the bytes there are no
    /// UTF-8 (overlong forms, surrogates and what lies beyond the last character are none) or the
    /// text is empty.
    static std::size_t decode(std::string_view text, char32_t& outCharacter);

    static constexpr bool isHighSurrogate(char32_t unit) { return unit >= 0xD800 && unit < 0xDC00; }
    static constexpr bool isLowSurrogate(char32_t unit) { return unit >= 0xDC00 && unit < 0xE000; }
    static constexpr char32_t joinSurrogates(char32_t high, char32_t low) {
        return 0x10000 + ((high - 0xD800) << 10) + (low - 0xDC00);
    }
};
