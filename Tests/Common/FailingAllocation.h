#pragma once

#include <cstddef>

namespace zpk_test {

/// Makes one allocation by `new` fail, in programs that link FailingAllocation.cpp, which replaces
/// the global operators.
class FailingAllocation {
public:
    /// From now on the allocation of this number (the first is 1) throws `std::bad_alloc`.
    explicit FailingAllocation(std::size_t number);
    ~FailingAllocation();
    FailingAllocation(const FailingAllocation&) = delete;
    FailingAllocation& operator=(const FailingAllocation&) = delete;
};

/// Blocks that are allocated and not yet freed.
std::size_t LiveAllocations();

}  // namespace zpk_test
