// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <memory>
#include <span>

#include "Archive/BlockPipeline.h"

struct inflate_state;

namespace zpk_archive {

class InputFile;

/// Inflates gzip members whose header has been read already; checks each one's CRC32 and length.
class Inflater {
public:
    Inflater();
    ~Inflater();

    /// A whole member, trailer included, into `plain`, which must be exactly `plainSize` bytes.
    /// Throws ArchiveFailure when it is damaged.
    void inflateWhole(std::span<const std::uint8_t> packed, ByteBuffer& plain, std::size_t plainSize);

    /// One member of any length, block after block, until its trailer has been taken from `input`.
    /// Throws ArchiveFailure when it is damaged or cut short; returns false once the pipeline is stopped.
    bool inflateStream(InputFile& input, BlockPipeline& pipeline);

private:
    void reset();

    std::unique_ptr<inflate_state> m_state;
};

}  // namespace zpk_archive
