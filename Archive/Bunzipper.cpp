// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/Bunzipper.h"

#include <bzlib.h>

#include <new>

#include "Archive/Failure.h"
#include "Archive/InputFile.h"

namespace zpk_archive {

namespace {

constexpr std::size_t kBlockSize = std::size_t{256} * 1024;

class Decompressor {
public:
    Decompressor() {
        if (BZ2_bzDecompressInit(&m_stream, 0, 0) != BZ_OK) {
            throw std::bad_alloc();
        }
    }
    ~Decompressor() { BZ2_bzDecompressEnd(&m_stream); }
    Decompressor(const Decompressor&) = delete;
    Decompressor& operator=(const Decompressor&) = delete;

    bool isAtEnd() const { return m_isAtEnd; }

    /// Fills the buffer as far as the stream goes.
    void fill(ByteBuffer& plain, InputFile& input) {
        plain.reserve(kBlockSize);
        while (plain.size < kBlockSize && !m_isAtEnd) {
            step(plain, input);
        }
    }

private:
    void step(ByteBuffer& plain, InputFile& input) {
        const std::span<const std::uint8_t> packed = input.available();
        // The library does not write through next_in; its type only lacks the const.
        m_stream.next_in = reinterpret_cast<char*>(const_cast<std::uint8_t*>(packed.data()));
        m_stream.avail_in = static_cast<unsigned>(packed.size());
        m_stream.next_out = reinterpret_cast<char*>(plain.data() + plain.size);
        m_stream.avail_out = static_cast<unsigned>(kBlockSize - plain.size);
        const int result = BZ2_bzDecompress(&m_stream);
        const std::size_t sizeBefore = plain.size;
        plain.size = kBlockSize - m_stream.avail_out;
        input.consume(packed.size() - m_stream.avail_in);
        if (result == BZ_MEM_ERROR) {
            throw std::bad_alloc();
        }
        if (result < 0) {
            throw ArchiveFailure("the compressed data are damaged");
        }
        m_isAtEnd = result == BZ_STREAM_END;
        if (packed.empty() && plain.size == sizeBefore && !m_isAtEnd) {
            throw ArchiveFailure("the archive ends in the middle of its compressed data");
        }
    }

    bz_stream m_stream{};
    bool m_isAtEnd = false;
};

}  // namespace

bool Bunzipper::unpackStream(InputFile& input, BlockPipeline& pipeline) {
    Decompressor decompressor;
    while (!decompressor.isAtEnd()) {
        BlockPipeline::Block* const block = pipeline.acquire();
        if (block == nullptr) {
            return false;
        }
        decompressor.fill(block->plain, input);
        pipeline.complete(*block);
    }
    return true;
}

}  // namespace zpk_archive
