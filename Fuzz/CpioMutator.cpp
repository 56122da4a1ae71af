// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

// Every other time a member is changed as a whole, else bytes.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "Fuzz/MemberMutator.h"

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maximum);

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maximum,
                                               unsigned seed) {
    std::vector<std::uint8_t> plain(data, data + size);
    if (seed % 2 == 0 || !zpk_fuzz::mutateMembers(plain, maximum, seed / 2)) {
        return LLVMFuzzerMutate(data, size, maximum);
    }
    std::copy(plain.begin(), plain.end(), data);
    return plain.size();
}
