// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace zpk_test {

/// An AppleDouble file with so many Finder info entries, each with a table of one attribute, whose values are
/// all the same bytes of the file.
inline std::string makeOverlappingTables(std::size_t tables, std::size_t valueSize) {
    std::string bytes;
    const auto put = [&bytes](std::size_t value, int size) {
        for (int shift = 8 * (size - 1); shift >= 0; shift -= 8) {
            bytes.push_back(static_cast<char>(value >> shift & 0xff));
        }
    };
    constexpr std::size_t kHeaderSize = 26;
    constexpr std::size_t kPlaceSize = 12;
    constexpr std::size_t kTableSize = 32 + 2 + 36 + 16;
    const std::size_t firstTable = kHeaderSize + kPlaceSize * tables;
    const std::size_t value = firstTable + kTableSize * tables;
    put(0x00051607, 4);
    put(0x00020000, 4);
    bytes.append(16, '\0');
    put(tables, 2);
    for (std::size_t table = 0; table < tables; ++table) {
        put(9, 4);
        put(firstTable + kTableSize * table, 4);
        put(kTableSize, 4);
    }
    for (std::size_t table = 0; table < tables; ++table) {
        bytes.append(32 + 2, '\0');
        bytes += "ATTR";
        bytes.append(30, '\0');
        put(1, 2);
        put(value, 4);
        put(valueSize, 4);
        put(0, 2);
        put(4, 1);
        bytes += {'k', static_cast<char>('0' + table / 8), static_cast<char>('0' + table % 8), '\0', '\0'};
    }
    return bytes + std::string(valueSize, 'v');
}

}  // namespace zpk_test
