// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/ReadAhead.h"

#include <string>
#include <utility>

namespace zpk_archive {

namespace {

/// Half a MiB, so that the threads seldom wake each other: one is taken, one waits, one is read.
constexpr std::size_t kPieceSize = std::size_t{512} * 1024;
constexpr std::size_t kPieces = 3;

}  // namespace

ReadAhead::ReadAhead(ByteSource source)
    : m_source(std::move(source)), m_pipeline(kPieces), m_reader([this] { readToEnd(); }) {}

ReadAhead::~ReadAhead() {
    m_pipeline.stop();
}

void ReadAhead::readToEnd() {
    std::string error;
    try {
        while (BlockPipeline::Block* const block = m_pipeline.acquire()) {
            block->plain.reserve(kPieceSize);
            block->plain.size = m_source(block->plain.data(), kPieceSize);
            if (block->plain.size == 0) {
                break;
            }
            m_pipeline.complete(*block);
        }
    } catch (const std::exception& failure) {
        error = failure.what();
    }
    m_pipeline.finish(error);
}

std::span<const std::uint8_t> ReadAhead::next() {
    for (;;) {
        BlockPipeline::Block* const block = m_pipeline.next();
        if (block == nullptr) {
            return {};
        }
        if (block->plain.size > 0) {
            return block->plain.bytes();
        }
    }
}

}  // namespace zpk_archive
