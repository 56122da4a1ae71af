// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include "Archive/BlockPipeline.h"

namespace zpk_archive {

class InputFile;

/// Unpacks bzip2 streams; checks each one's sums.
class Bunzipper {
public:
    /// One stream of any length, header included, block after block, until its end has been taken from
    /// `input`. Throws ArchiveFailure when it is damaged or cut short; returns false once the pipeline is
    /// stopped.
    static bool unpackStream(InputFile& input, BlockPipeline& pipeline);
};

}  // namespace zpk_archive
