// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// What may reach a terminal. May be called from any thread.
class ZPKTerminalText {
public:
    ZPKTerminalText() = delete;

    static constexpr std::size_t kNoLimit = static_cast<std::size_t>(-1);

    /// True for a character that a terminal only draws: none that it obeys (controls, C1 controls
    /// included), none that turns the direction of text around.
    static bool isHarmless(char32_t character);

    /// A name or a reason as one line that can be read back: what is not harmless, bytes that are no
    /// UTF-8 and the backslash become escapes (\n, \x1b). A line longer than `limit` bytes is cut there,
    /// never within a character or an escape, and "..." put behind it.
    static std::string printable(std::string_view text, std::size_t limit = kNoLimit);

    /// A text for people: line feeds stay, anything else that is not harmless or no UTF-8 is left out.
    static std::string harmless(std::string_view text);
};
