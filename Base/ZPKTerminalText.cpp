// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Base/ZPKTerminalText.h"

#include <algorithm>
#include <cstdio>

#include "Base/ZPKUnicode.h"

namespace {

constexpr std::string_view kCutMark = "...";

bool isPlain(char character) {
    return character >= ' ' && character <= '~' && character != '\\';
}

std::string escaped(unsigned char byte) {
    switch (byte) {
        case '\n':
            return "\\n";
        case '\t':
            return "\\t";
        case '\\':
            return "\\\\";
        default: {
            char text[8];
            std::snprintf(text, sizeof(text), "\\x%02x", byte);
            return text;
        }
    }
}

}  // namespace

bool ZPKTerminalText::isHarmless(char32_t character) {
    const bool isControl = character < 0x20 || (character >= 0x7F && character < 0xA0);
    const bool turnsText = character == 0x061C || character == 0x200E || character == 0x200F ||
                           (character >= 0x202A && character <= 0x202E) ||
                           (character >= 0x2066 && character <= 0x206F);
    const bool endsLine = character == 0x2028 || character == 0x2029;
    return !isControl && !turnsText && !endsLine;
}

std::string ZPKTerminalText::printable(std::string_view text, std::size_t limit) {
    // Nearly every name, and listings have many.
    if (text.size() <= limit && std::all_of(text.begin(), text.end(), isPlain)) {
        return std::string(text);
    }
    std::string line;
    while (!text.empty()) {
        char32_t character = 0;
        const std::size_t length = ZPKUnicode::decode(text, character);
        const bool asItIs = length > 0 && isHarmless(character) && character != U'\\';
        const std::string piece =
            asItIs ? std::string(text.substr(0, length)) : escaped(static_cast<unsigned char>(text.front()));
        if (piece.size() > limit - line.size()) {
            return line.append(kCutMark);
        }
        line += piece;
        text.remove_prefix(asItIs ? length : 1);
    }
    return line;
}

std::string ZPKTerminalText::harmless(std::string_view text) {
    std::string kept;
    while (!text.empty()) {
        char32_t character = 0;
        const std::size_t length = ZPKUnicode::decode(text, character);
        if (length > 0 && (character == U'\n' || isHarmless(character))) {
            kept.append(text.substr(0, length));
        }
        text.remove_prefix(length > 0 ? length : 1);
    }
    return kept;
}
