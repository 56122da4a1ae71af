// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace zpk_archive {

/// Bytes whose storage is kept from one use to the next.
class ByteBuffer {
public:
    /// Makes room for `capacity` bytes; what was in it is lost when it has to grow.
    void reserve(std::size_t capacity) {
        if (capacity > m_capacity) {
            m_bytes = std::make_unique_for_overwrite<std::uint8_t[]>(capacity);
            m_capacity = capacity;
        }
    }

    std::uint8_t* data() { return m_bytes.get(); }
    std::span<const std::uint8_t> bytes() const { return {m_bytes.get(), size}; }

    std::size_t size = 0;

private:
    std::unique_ptr<std::uint8_t[]> m_bytes;
    std::size_t m_capacity = 0;
};

}  // namespace zpk_archive
