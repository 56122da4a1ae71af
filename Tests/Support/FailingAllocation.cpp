// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tests/Support/FailingAllocation.h"

#include <array>
#include <cstdlib>
#include <new>

namespace {

// 0 while no allocation is to fail.
std::size_t g_allocationsUntilFailure = 0;
bool g_hasFailed = false;
std::size_t g_liveAllocations = 0;

bool g_isRecording = false;
std::size_t g_deletionCount = 0;
// Plain storage: recording must not allocate.
std::array<const void*, 4096> g_deletions;

void* allocate(std::size_t size) {
    if (g_allocationsUntilFailure != 0 && --g_allocationsUntilFailure == 0) {
        g_hasFailed = true;
        throw std::bad_alloc();
    }
    void* memory = std::malloc(size != 0 ? size : 1);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    ++g_liveAllocations;
    return memory;
}

void release(void* memory) {
    if (memory == nullptr) {
        return;
    }
    if (g_isRecording && g_deletionCount < g_deletions.size()) {
        g_deletions[g_deletionCount++] = memory;
    }
    --g_liveAllocations;
    std::free(memory);
}

}  // namespace

void* operator new(std::size_t size) {
    return allocate(size);
}
void* operator new[](std::size_t size) {
    return allocate(size);
}
void operator delete(void* memory) noexcept {
    release(memory);
}
void operator delete[](void* memory) noexcept {
    release(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    release(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    release(memory);
}

namespace zpk_test {

FailingAllocation::FailingAllocation(std::size_t number) {
    g_hasFailed = false;
    g_allocationsUntilFailure = number;
}

FailingAllocation::~FailingAllocation() {
    g_allocationsUntilFailure = 0;
}

bool FailingAllocation::hasFailed() {
    return g_hasFailed;
}

std::size_t liveAllocations() {
    return g_liveAllocations;
}

std::size_t runWithEachAllocationFailing(const std::function<void()>& action) {
    for (std::size_t count = 1;; ++count) {
        const FailingAllocation failing(count);
        try {
            action();
        } catch (const std::bad_alloc&) {
        }
        if (!g_hasFailed) {
            return count - 1;
        }
    }
}

std::vector<const void*> recordDeletions(const std::function<void()>& action) {
    g_deletionCount = 0;
    g_isRecording = true;
    action();
    g_isRecording = false;
    return std::vector<const void*>(g_deletions.begin(),
                                    g_deletions.begin() + static_cast<std::ptrdiff_t>(g_deletionCount));
}

}  // namespace zpk_test
