// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/Terminal/ZPKReadingOrder.h"

#include <algorithm>
#include <iterator>

#include "Base/ZPKUnicode.h"

namespace {

/// A right-to-left letter without a shape.
constexpr std::string_view kMark = "\u200F";

/// Others at the beginning of a line are the launcher's own: `> [1]`, `[###`.
constexpr std::u32string_view kOpening = U"\"'(«»“”„‘’‚";

struct Range {
    char32_t first;
    char32_t last;
};

/// Hebrew to Arabic, the forms for older fonts, and the scripts beyond; their digits, which stand from left
/// to right, apart.
constexpr Range kRightToLeft[] = {{0x0590, 0x065F}, {0x066D, 0x06EF},   {0x06FA, 0x08FF},  {0xFB1D, 0xFDFF},
                                  {0xFE70, 0xFEFF}, {0x10800, 0x10FFF}, {0x1E800, 0x1EFFF}};

/// Beyond ASCII: the signs of Latin-1, those for all scripts, arrows to shapes, East Asian ones, wide ones.
constexpr Range kSigns[] = {{0x00A0, 0x00BF}, {0x2000, 0x206F}, {0x20A0, 0x20CF}, {0x2190, 0x2BFF},
                            {0x3000, 0x303F}, {0xFF00, 0xFF20}, {0x060C, 0x060C}, {0x066A, 0x066C}};

template <std::size_t Count>
bool isIn(const Range (&ranges)[Count], char32_t character) {
    return std::any_of(std::begin(ranges), std::end(ranges), [character](const Range& range) {
        return character >= range.first && character <= range.last;
    });
}

enum class Kind { Blank, Digit, Sign, LeftToRight, RightToLeft };

Kind kindOf(char32_t character) {
    const bool isDigit = (character >= U'0' && character <= U'9') ||
                         (character >= 0x0660 && character <= 0x0669) ||
                         (character >= 0x06F0 && character <= 0x06F9);
    const char32_t small = character | 0x20;
    if (character == U' ' || character == 0xA0) {
        return Kind::Blank;
    }
    if (isDigit) {
        return Kind::Digit;
    }
    if (isIn(kSigns, character) || (character < 0x80 && (small < U'a' || small > U'z'))) {
        return Kind::Sign;
    }
    return isIn(kRightToLeft, character) ? Kind::RightToLeft : Kind::LeftToRight;
}

std::string markedLine(std::string_view line) {
    Kind first = Kind::Blank;
    Kind last = Kind::Blank;
    bool opens = false;
    bool isBegun = false;
    bool endsInSigns = false;
    for (std::string_view rest = line; !rest.empty();) {
        char32_t character = 0;
        rest.remove_prefix(std::max<std::size_t>(ZPKUnicode::decode(rest, character), 1));
        const Kind kind = kindOf(character);
        opens = opens || (!isBegun && kOpening.find(character) != std::u32string_view::npos);
        isBegun = isBegun || kind != Kind::Blank;
        endsInSigns = kind == Kind::Sign || (endsInSigns && kind < Kind::Sign);
        if (kind > Kind::Sign) {
            first = first == Kind::Blank ? kind : first;
            last = kind;
        }
    }
    std::string marked(line);
    if (last == Kind::RightToLeft && endsInSigns) {
        marked.append(kMark);
    }
    if (first == Kind::RightToLeft && opens) {
        marked.insert(std::min(line.find_first_not_of(' '), line.size()), kMark);
    }
    return marked;
}

}  // namespace

std::string ZPKReadingOrder::marked(std::string_view lines) {
    std::string marked;
    for (;;) {
        const std::size_t end = lines.find('\n');
        marked += markedLine(lines.substr(0, end));
        if (end == std::string_view::npos) {
            return marked;
        }
        marked += '\n';
        lines.remove_prefix(end + 1);
    }
}
