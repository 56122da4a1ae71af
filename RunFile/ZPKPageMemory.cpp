// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "RunFile/ZPKPageMemory.h"

#include <sys/mman.h>

#include <new>

ZPKPageMemory::ZPKPageMemory(std::size_t size) : m_bytes(nullptr, Unmapping{size}) {
    if (size == 0) {
        return;
    }
    void* const bytes = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (bytes == MAP_FAILED) {
        throw std::bad_alloc();
    }
    m_bytes.reset(static_cast<char*>(bytes));
    // Wishes: a kernel that knows one of them not gives the pages when they are touched.
    static_cast<void>(::madvise(bytes, size, MADV_HUGEPAGE) == 0);
    static_cast<void>(::madvise(bytes, size, MADV_POPULATE_WRITE) == 0);
}

void ZPKPageMemory::Unmapping::operator()(char* bytes) const {
    ::munmap(bytes, size);
}
