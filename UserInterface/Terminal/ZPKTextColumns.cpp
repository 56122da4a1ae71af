// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/Terminal/ZPKTextColumns.h"

#include <algorithm>
#include <iterator>

#include "Base/ZPKUnicode.h"
#include "UserInterface/Terminal/ZPKColumnTable.h"

namespace {

template <std::size_t Size>
bool isIn(const ZPKCharacterRange (&ranges)[Size], char32_t character) {
    const auto* range =
        std::partition_point(std::begin(ranges), std::end(ranges),
                             [character](const ZPKCharacterRange& each) { return each.last < character; });
    return range != std::end(ranges) && character >= range->first;
}

}  // namespace

std::size_t ZPKTextColumns::ofCharacter(char32_t character) {
    if (isIn(kZeroWidthCharacters, character)) {
        return 0;
    }
    return isIn(kWideCharacters, character) ? 2 : 1;
}

std::size_t ZPKTextColumns::of(std::string_view text) {
    std::size_t columns = 0;
    while (!text.empty()) {
        char32_t character = 0;
        const std::size_t length = ZPKUnicode::decode(text, character);
        columns += length > 0 ? ofCharacter(character) : 0;
        text.remove_prefix(length > 0 ? length : 1);
    }
    return columns;
}
