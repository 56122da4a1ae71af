// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>
#include <span>
#include <thread>

#include "Archive/BlockPipeline.h"
#include "Archive/ByteSource.h"

namespace zpk_archive {

/// The bytes of a source, read in a thread of its own a little before they are asked for. Who inflates one
/// stream would read for a twentieth of the time, and nobody else could inflate meanwhile.
class ReadAhead {
public:
    /// Reads at once. Throws std::system_error where no thread can be started.
    explicit ReadAhead(ByteSource source);
    /// Waits for the call of the source that is under way.
    ~ReadAhead();
    ReadAhead(const ReadAhead&) = delete;
    ReadAhead& operator=(const ReadAhead&) = delete;

    /// The next bytes, valid until the next call; empty at the end. Throws ArchiveFailure with the reason of
    /// the source that could not go on, after all that it gave.
    std::span<const std::uint8_t> next();

private:
    void readToEnd();

    ByteSource m_source;
    BlockPipeline m_pipeline;
    std::jthread m_reader;
};

}  // namespace zpk_archive
