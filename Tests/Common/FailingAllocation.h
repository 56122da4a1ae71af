#pragma once

#include <cstddef>
#include <functional>
#include <vector>

namespace zpk_test {

/// Runs `action` again and again, its Nth `new` throwing `std::bad_alloc`, N rising from 1 until it
/// runs to its end without one failing. `action` must let the exception pass or deal with it.
/// Returns how many runs met a failing allocation. Only in programs that list FailingAllocation.cpp.
std::size_t RunWithEachAllocationFailing(const std::function<void()>& action);

/// The addresses that `action` gives to `delete`, in order.
std::vector<const void*> RecordDeletions(const std::function<void()>& action);

}  // namespace zpk_test
