// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <string>

namespace zpk_test {

/// Bytes without a period that a test could mistake for another place of them; the same for each `seed`.
inline std::string pattern(std::size_t length, unsigned int seed = 7) {
    std::string bytes(length, '\0');
    unsigned int state = seed;
    for (char& byte : bytes) {
        state = state * 1103515245 + 12345;
        byte = static_cast<char>(state >> 16);
    }
    return bytes;
}

}  // namespace zpk_test
