// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "Base/ZPKFailure.h"

/// The bytes of some files, compressed as one zstd frame. A value that moves.
class ZPKPackedBlock {
public:
    /// As small as it gets in a reasonable time; the same bytes give the same block.
    static ZPKResult<ZPKPackedBlock> of(const std::string& plain);

    /// To see in little time what compressing would gain.
    static ZPKResult<ZPKPackedBlock> quicklyOf(const std::string& plain);

    /// The most memory, in bytes, that `of` takes for so many bytes, they and the block included.
    static std::uint64_t memoryFor(std::uint64_t plainSize);

    /// Valid as long as the block.
    std::string_view bytes() const { return {m_bytes.get(), m_size}; }

private:
    ZPKPackedBlock(std::unique_ptr<char[]> bytes, std::size_t size)
        : m_bytes(std::move(bytes)), m_size(size) {}

    static ZPKResult<ZPKPackedBlock> compressed(const std::string& plain, int level, int chainLog,
                                                int hashLog);

    /// Room for the worst case: memory that nothing is written to takes none.
    std::unique_ptr<char[]> m_bytes;
    std::size_t m_size;
};
