// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/GzipWriter.h"

#include <isa-l/crc.h>
#include <libdeflate.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <new>

#include "Archive/Failure.h"
#include "Archive/GzipMember.h"
#include "Archive/OutputFile.h"

namespace zpk_archive {

namespace {

/// The last level before the cost in time rises steeply, and already smaller than what pigz makes.
constexpr int kLevel = 6;

struct CompressorCloser {
    void operator()(libdeflate_compressor* compressor) const { libdeflate_free_compressor(compressor); }
};
using Compressor = std::unique_ptr<libdeflate_compressor, CompressorCloser>;

void deflateBlock(libdeflate_compressor* compressor, BlockPipeline::Block& block) {
    std::size_t bound = libdeflate_deflate_compress_bound(compressor, block.plain.size);
    block.packed.reserve(kGzipMemberHeaderSize + bound + kGzipMemberTrailerSize);
    std::uint8_t* deflated = block.packed.data() + kGzipMemberHeaderSize;
    std::size_t size =
        libdeflate_deflate_compress(compressor, block.plain.data(), block.plain.size, deflated, bound);
    if (size == 0) {
        throw ArchiveFailure("the data cannot be compressed");
    }
    auto plainSize = static_cast<std::uint32_t>(block.plain.size);
    auto packedSize = static_cast<std::uint32_t>(size + kGzipMemberTrailerSize);
    auto header = makeGzipMemberHeader({packedSize, plainSize});
    auto trailer =
        makeGzipMemberTrailer(::crc32_gzip_refl(0, block.plain.data(), block.plain.size), plainSize);
    std::copy(header.begin(), header.end(), block.packed.data());
    std::copy(trailer.begin(), trailer.end(), deflated + size);
    block.packed.size = header.size() + size + trailer.size();
}

bool isAllZeros(std::span<const std::uint8_t> bytes) {
    return bytes[0] == 0 && std::memcmp(bytes.data(), bytes.data() + 1, bytes.size() - 1) == 0;
}

/// Deflates blocks, each whole block of zeros only once: the holes of sparse files are made of them.
class Deflater {
public:
    Deflater() : m_compressor(libdeflate_alloc_compressor(kLevel)) {
        if (!m_compressor) {
            throw std::bad_alloc();
        }
    }

    void deflate(BlockPipeline::Block& block) {
        bool zeros = block.plain.size == kGzipMemberPlainSize && isAllZeros(block.plain.bytes());
        if (zeros && !m_zeroMember.empty()) {
            block.packed.reserve(m_zeroMember.size());
            std::copy(m_zeroMember.begin(), m_zeroMember.end(), block.packed.data());
            block.packed.size = m_zeroMember.size();
            return;
        }
        deflateBlock(m_compressor.get(), block);
        if (zeros) {
            m_zeroMember.assign(block.packed.bytes().begin(), block.packed.bytes().end());
        }
    }

private:
    Compressor m_compressor;
    std::vector<std::uint8_t> m_zeroMember;
};

}  // namespace

GzipWriter::GzipWriter(OutputFile& output) : m_output(output), m_pipeline(BlockPipeline::suitableLength()) {
    for (std::size_t i = 0; i < BlockPipeline::suitableWorkers(); ++i) {
        m_workers.emplace_back([this] { deflateSubmitted(); });
    }
    m_writer = std::jthread([this] { writeCompleted(); });
}

GzipWriter::~GzipWriter() {
    m_pipeline.stop();
}

void GzipWriter::write(std::span<const std::uint8_t> bytes) {
    while (!bytes.empty()) {
        if (m_filling == nullptr) {
            m_filling = m_pipeline.acquire();
            if (m_filling == nullptr) {
                throwIfFailed();
            }
            m_filling->plain.reserve(kGzipMemberPlainSize);
        }
        ByteBuffer& plain = m_filling->plain;
        std::size_t count = std::min(bytes.size(), kGzipMemberPlainSize - plain.size);
        std::memcpy(plain.data() + plain.size, bytes.data(), count);
        plain.size += count;
        bytes = bytes.subspan(count);
        if (plain.size == kGzipMemberPlainSize) {
            handOn();
        }
    }
}

void GzipWriter::handOn() {
    m_pipeline.submit(*m_filling);
    m_filling = nullptr;
}

void GzipWriter::finish() {
    if (m_filling != nullptr) {
        handOn();
    }
    m_pipeline.finish({});
    m_writer.join();
    throwIfFailed();
}

void GzipWriter::throwIfFailed() {
    if (m_failed) {
        throw ArchiveFailure(m_error);
    }
}

void GzipWriter::deflateSubmitted() {
    std::unique_ptr<Deflater> deflater;
    while (BlockPipeline::Block* block = m_pipeline.takeWork()) {
        try {
            if (!deflater) {
                deflater = std::make_unique<Deflater>();
            }
            deflater->deflate(*block);
        } catch (const std::exception& failure) {
            block->error = failure.what();
        }
        m_pipeline.complete(*block);
    }
}

void GzipWriter::writeCompleted() {
    try {
        while (BlockPipeline::Block* block = m_pipeline.next()) {
            m_output.write(block->packed.bytes());
        }
    } catch (const std::exception& failure) {
        m_error = failure.what();
        m_failed = true;
        m_pipeline.stop();
    }
}

}  // namespace zpk_archive
