#include "Tests/Common/FailingAllocation.h"

#include <cstdlib>
#include <new>

namespace {

// 0 while no allocation is to fail. The programs under test have one thread.
std::size_t allocationsUntilFailure = 0;
std::size_t liveAllocations = 0;

}  // namespace

void* operator new(std::size_t size) {
    if (allocationsUntilFailure > 0 && --allocationsUntilFailure == 0) {
        throw std::bad_alloc();
    }
    void* block = std::malloc(size > 0 ? size : 1);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    ++liveAllocations;
    return block;
}

void operator delete(void* block) noexcept {
    if (block != nullptr) {
        --liveAllocations;
        std::free(block);
    }
}

void operator delete(void* block, std::size_t) noexcept {
    operator delete(block);
}

namespace zpk_test {

FailingAllocation::FailingAllocation(std::size_t number) {
    allocationsUntilFailure = number;
}

FailingAllocation::~FailingAllocation() {
    allocationsUntilFailure = 0;
}

std::size_t LiveAllocations() {
    return liveAllocations;
}

}  // namespace zpk_test
