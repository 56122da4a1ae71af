// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/Inflater.h"

#include <isa-l/igzip_lib.h>

#include "Archive/Failure.h"
#include "Archive/InputFile.h"

namespace zpk_archive {

namespace {

constexpr std::size_t kBlockSize = std::size_t{1} << 20;

void throwUnlessGood(int result) {
    if (result == ISAL_INCORRECT_CHECKSUM) {
        throw ArchiveFailure("the compressed data are damaged (checksum)");
    }
    if (result < 0) {
        throw ArchiveFailure("the compressed data are damaged");
    }
}

}  // namespace

Inflater::Inflater() : m_state(std::make_unique<inflate_state>()) {}

Inflater::~Inflater() = default;

bool Inflater::inflateStream(InputFile& input, BlockPipeline& pipeline) {
    isal_inflate_init(m_state.get());
    m_state->crc_flag = ISAL_GZIP_NO_HDR_VER;
    while (m_state->block_state != ISAL_BLOCK_FINISH) {
        BlockPipeline::Block* block = pipeline.acquire();
        if (block == nullptr) {
            return false;
        }
        block->plain.reserve(kBlockSize);
        m_state->next_out = block->plain.data();
        m_state->avail_out = kBlockSize;
        while (m_state->avail_out > 0 && m_state->block_state != ISAL_BLOCK_FINISH) {
            std::span<const std::uint8_t> packed = input.available();
            // The library does not write through next_in; its type only lacks the const.
            m_state->next_in = const_cast<std::uint8_t*>(packed.data());
            m_state->avail_in = static_cast<std::uint32_t>(packed.size());
            std::uint32_t roomBefore = m_state->avail_out;
            int result = isal_inflate(m_state.get());
            // What came out before a damaged place is still handed on.
            block->plain.size = kBlockSize - m_state->avail_out;
            throwUnlessGood(result);
            input.consume(packed.size() - m_state->avail_in);
            if (packed.empty() && m_state->avail_out == roomBefore) {
                throw ArchiveFailure("the archive ends in the middle of its compressed data");
            }
        }
        pipeline.complete(*block);
    }
    return true;
}

}  // namespace zpk_archive
