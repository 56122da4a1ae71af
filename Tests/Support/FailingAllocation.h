// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <functional>
#include <vector>

namespace zpk_test {

// For programs that list FailingAllocation.cpp, which replaces the global allocation operators. The
// code under test has one thread.

/// Makes one allocation by `new` fail for as long as it lives.
class FailingAllocation {
public:
    /// From now on the allocation of this number (the first is 1) throws `std::bad_alloc`.
    explicit FailingAllocation(std::size_t number);
    ~FailingAllocation();
    FailingAllocation(const FailingAllocation&) = delete;
    FailingAllocation& operator=(const FailingAllocation&) = delete;

    /// Whether the allocation was reached since the last one of these was made.
    static bool hasFailed();
};

/// Blocks that are allocated and not yet freed.
std::size_t liveAllocations();

/// Runs `action` again and again, its Nth `new` throwing `std::bad_alloc`, N rising from 1 until it
/// runs to its end without one failing. `action` must let the exception pass or deal with it.
/// Returns how many runs met a failing allocation.
std::size_t runWithEachAllocationFailing(const std::function<void()>& action);

/// The addresses that `action` gives to `delete`, in order.
std::vector<const void*> recordDeletions(const std::function<void()>& action);

}  // namespace zpk_test
