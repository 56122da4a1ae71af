// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <memory>

#include "Archive/BlockPipeline.h"

struct inflate_state;

namespace zpk_archive {

class InputFile;

/// Inflates gzip members of any length, whose header has been read already; checks each one's CRC32 and
/// length.
class Inflater {
public:
    Inflater();
    ~Inflater();

    /// One member, block after block, until its trailer has been taken from `input`.
    /// Throws ArchiveFailure when it is damaged or cut short; returns false once the pipeline is stopped.
    bool inflateStream(InputFile& input, BlockPipeline& pipeline);

private:
    std::unique_ptr<inflate_state> m_state;
};

}  // namespace zpk_archive
