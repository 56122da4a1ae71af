// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <memory>
#include <string_view>

/// Memory for many bytes, all of which are about to be written: nothing is filled in before, and the kernel
/// gives it at once, in large pages where it can, instead of page by page as it is touched. One thread uses
/// one.
class ZPKPageMemory {
public:
    /// Throws std::bad_alloc when there is not enough.
    explicit ZPKPageMemory(std::size_t size);

    char* data() { return m_bytes.get(); }
    const char* data() const { return m_bytes.get(); }
    std::size_t size() const { return m_bytes.get_deleter().size; }
    std::string_view view() const { return {data(), size()}; }

private:
    struct Unmapping {
        std::size_t size;
        void operator()(char* bytes) const;
    };

    std::unique_ptr<char[], Unmapping> m_bytes;
};
