// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Base/ZPKEncodingTable.h"

std::vector<char16_t> ZPKEncodingTable::characters() const {
    // No character comes twice in a row, so this distance is free.
    constexpr unsigned int kHole = 0xFFFF;
    std::vector<char16_t> found(size, kNoCharacter);
    unsigned int before = 0;
    for (std::size_t code = 0; code < size; ++code) {
        const unsigned int distance = distances[code] + 256U * distances[size + code];
        if (distance != kHole) {
            before = (before + distance + 1) % 0x10000;
            found[code] = static_cast<char16_t>(before);
        }
    }
    return found;
}
