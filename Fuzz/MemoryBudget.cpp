// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Fuzz/MemoryBudget.h"

#include <sanitizer/allocator_interface.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <string_view>

namespace zpk_fuzz {

namespace {

/// What any reading may take: buffers of a fixed size.
constexpr std::size_t kFixed = std::size_t{1} << 20;

std::atomic<bool> g_isCounting = false;
std::atomic<std::ptrdiff_t> g_left = 0;

void taken(const volatile void*, std::size_t size) {
    if (!g_isCounting) {
        return;
    }
    const auto bytes = static_cast<std::ptrdiff_t>(size);
    if (g_left.fetch_sub(bytes) < bytes) {
        g_isCounting = false;
        constexpr std::string_view kWords = "more memory than the input is worth\n";
        static_cast<void>(::write(STDERR_FILENO, kWords.data(), kWords.size()));
        std::abort();
    }
}

void given(const volatile void* place) {
    if (g_isCounting && place != nullptr) {
        const volatile void* const freed = place;
        g_left += static_cast<std::ptrdiff_t>(__sanitizer_get_allocated_size(freed));
    }
}

}  // namespace

MemoryBudget::MemoryBudget(std::size_t bytes) {
    [[maybe_unused]] static const int kInstalled = __sanitizer_install_malloc_and_free_hooks(taken, given);
    g_left = static_cast<std::ptrdiff_t>(bytes);
    g_isCounting = true;
}

MemoryBudget::~MemoryBudget() {
    g_isCounting = false;
}

std::size_t MemoryBudget::forInput(std::size_t size, std::size_t times) {
    return kFixed + times * size;
}

}  // namespace zpk_fuzz
