// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <cstring>

namespace zpk_test {

/// The 1-based place of a virtual operation in its class's table (the two destructors that a class
/// declares take two places), read from the pointer to member as the Itanium C++ ABI lays it out.
template <typename Member>
std::size_t virtualSlot(Member member) {
    static_assert(sizeof(member) == 2 * sizeof(std::ptrdiff_t));
    std::ptrdiff_t words[2];
    std::memcpy(words, &member, sizeof(words));
    return static_cast<std::size_t>(words[0] - 1) / sizeof(void*) + 1;
}

}  // namespace zpk_test
