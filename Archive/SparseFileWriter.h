// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>
#include <span>

namespace zpk_archive {

/// Writes a new file from its start, leaving holes where there are long runs of zeros.
/// Operations throw MemberFailure, or VolumeFullFailure.
class SparseFileWriter {
public:
    /// `descriptor` is an empty file's and stays the caller's.
    explicit SparseFileWriter(int descriptor) : m_descriptor(descriptor) {}

    void write(std::span<const std::uint8_t> bytes);
    /// Gives the file its size when it ends in a hole.
    void finish();

private:
    std::size_t toPageStart() const;
    std::size_t skipZeros(std::span<const std::uint8_t> bytes);
    void writeData(std::span<const std::uint8_t> bytes);

    int m_descriptor;
    std::int64_t m_offset = 0;
    bool m_endsInHole = false;
};

}  // namespace zpk_archive
