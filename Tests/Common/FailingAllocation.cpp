#include "Tests/Common/FailingAllocation.h"

#include <array>
#include <cstdlib>
#include <new>

namespace {

// 0: every allocation succeeds.
std::size_t g_allocationsUntilFailure = 0;
bool g_hasFailed = false;

bool g_isRecording = false;
std::size_t g_deletionCount = 0;
// Plain storage: recording must not allocate.
std::array<const void*, 4096> g_deletions;

void* Allocate(std::size_t size) {
    if (g_allocationsUntilFailure != 0 && --g_allocationsUntilFailure == 0) {
        g_hasFailed = true;
        throw std::bad_alloc();
    }
    void* memory = std::malloc(size != 0 ? size : 1);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

void Free(void* memory) {
    if (g_isRecording && memory != nullptr && g_deletionCount < g_deletions.size()) {
        g_deletions[g_deletionCount++] = memory;
    }
    std::free(memory);
}
// 0 while no allocation is to fail. The programs under test have one thread.
std::size_t allocationsUntilFailure = 0;
std::size_t liveAllocations = 0;

}  // namespace

void* operator new(std::size_t size) {
    return Allocate(size);
}
void* operator new[](std::size_t size) {
    return Allocate(size);
}
void operator delete(void* memory) noexcept {
    Free(memory);
}
void operator delete[](void* memory) noexcept {
    Free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    Free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    Free(memory);
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

std::size_t RunWithEachAllocationFailing(const std::function<void()>& action) {
    for (std::size_t count = 1;; ++count) {
        g_hasFailed = false;
        g_allocationsUntilFailure = count;
        try {
            action();
        } catch (const std::bad_alloc&) {
        }
        g_allocationsUntilFailure = 0;
        if (!g_hasFailed) {
            return count - 1;
        }
    }
}

std::vector<const void*> RecordDeletions(const std::function<void()>& action) {
    g_deletionCount = 0;
    g_isRecording = true;
    action();
    g_isRecording = false;
    return std::vector<const void*>(g_deletions.begin(),
                                    g_deletions.begin() + static_cast<std::ptrdiff_t>(g_deletionCount));
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
