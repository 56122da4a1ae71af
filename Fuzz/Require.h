// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdio>
#include <cstdlib>

namespace zpk_fuzz {

/// Stops the program, which makes the input a finding, unless the condition holds.
inline void require(bool condition, const char* otherwise) {
    if (!condition) {
        std::fprintf(stderr, "%s\n", otherwise);
        std::abort();
    }
}

}  // namespace zpk_fuzz
