// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "Archive/BlockPipeline.h"
#include "Archive/InputFile.h"

namespace zpk_archive {

/// The plain bytes of an archive file, whatever compresses them, made in threads of their own while the
/// caller works on the blocks before.
class PlainStream {
public:
    /// Throws ArchiveFailure when the file cannot be read or is empty.
    explicit PlainStream(InputFile input);
    ~PlainStream();
    PlainStream(const PlainStream&) = delete;
    PlainStream& operator=(const PlainStream&) = delete;

    /// The next bytes, valid until the next call; empty at the end.
    /// Throws ArchiveFailure where the file is damaged, cut short or unreadable.
    std::span<const std::uint8_t> next();

private:
    void produce(const std::function<void()>& makeBlocks);
    void copyPlain();
    void unpackBzip2();
    void unpackGzip();
    bool submitMember(std::size_t packedSize, std::size_t plainSize);
    /// Skips zeros; whether compressed data of the same kind follow, which begin with `magic`.
    bool skipPadding(std::string_view magic, const std::string& method);
    void inflateSubmitted();
    void startWorkers();

    InputFile m_input;
    BlockPipeline m_pipeline;
    std::vector<std::jthread> m_workers;
    std::jthread m_producer;
};

}  // namespace zpk_archive
