// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <atomic>
#include <cstdint>
#include <span>
#include <string>
#include <thread>
#include <vector>

#include "Archive/BlockPipeline.h"

namespace zpk_archive {

class OutputFile;

/// Deflates a stream of bytes into gzip members of a fixed plain size, several at a time, and writes
/// them in order.
class GzipWriter {
public:
    explicit GzipWriter(OutputFile& output);
    ~GzipWriter();
    GzipWriter(const GzipWriter&) = delete;
    GzipWriter& operator=(const GzipWriter&) = delete;

    /// Throws ArchiveFailure when the output cannot be written.
    void write(std::span<const std::uint8_t> bytes);
    /// Deflates and writes what is left. Throws ArchiveFailure.
    void finish();

private:
    void handOn();
    void deflateSubmitted();
    void writeCompleted();
    void throwIfFailed();

    OutputFile& m_output;
    BlockPipeline m_pipeline;
    BlockPipeline::Block* m_filling = nullptr;
    std::string m_error;  ///< Set by the writing thread before it stops the pipeline.
    std::atomic<bool> m_failed = false;
    std::vector<std::jthread> m_workers;
    std::jthread m_writer;
};

}  // namespace zpk_archive
