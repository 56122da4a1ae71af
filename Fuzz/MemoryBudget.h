// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>

namespace zpk_fuzz {

/// While it lives, all threads together may hold so many bytes of heap more than at its beginning; the
/// allocation that goes beyond stops the program. One at a time.
class MemoryBudget {
public:
    explicit MemoryBudget(std::size_t bytes);
    ~MemoryBudget();
    MemoryBudget(const MemoryBudget&) = delete;
    MemoryBudget& operator=(const MemoryBudget&) = delete;

    /// For what reads an input of so many bytes: a fixed amount, and so many times the input.
    static std::size_t forInput(std::size_t size, std::size_t times);
};

}  // namespace zpk_fuzz
