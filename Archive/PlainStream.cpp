// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/PlainStream.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <utility>

#include "Archive/Bunzipper.h"
#include "Archive/Failure.h"
#include "Archive/GzipMember.h"
#include "Archive/Inflater.h"
#include "Archive/MemberInflater.h"

namespace zpk_archive {

namespace {

constexpr std::size_t kCopySize = std::size_t{256} * 1024;
constexpr std::string_view kGzipMagic = "\x1f\x8b";
constexpr std::string_view kBzip2Magic = "BZh";

bool startsWith(std::span<const std::uint8_t> bytes, std::string_view magic) {
    return bytes.size() >= magic.size() && std::memcmp(bytes.data(), magic.data(), magic.size()) == 0;
}

}  // namespace

PlainStream::PlainStream(InputFile input)
    : m_input(std::move(input)), m_pipeline(BlockPipeline::suitableLength()) {
    std::span<const std::uint8_t> head = m_input.peek(3);
    void (PlainStream::*method)() = &PlainStream::copyPlain;
    if (head.empty()) {
        throw ArchiveFailure("the file is empty");
    }
    if (startsWith(head, kGzipMagic)) {
        method = &PlainStream::unpackGzip;
    } else if (startsWith(head, kBzip2Magic)) {
        method = &PlainStream::unpackBzip2;
    }
    m_producer = std::jthread([this, method] { produce([this, method] { (this->*method)(); }); });
}

PlainStream::~PlainStream() {
    m_pipeline.stop();
}

std::span<const std::uint8_t> PlainStream::next() {
    for (;;) {
        BlockPipeline::Block* block = m_pipeline.next();
        if (block == nullptr) {
            return {};
        }
        if (block->plain.size > 0) {
            return block->plain.bytes();
        }
    }
}

void PlainStream::produce(const std::function<void()>& makeBlocks) {
    std::string error;
    try {
        makeBlocks();
    } catch (const std::exception& failure) {
        error = failure.what();
    }
    m_pipeline.finish(error);
    // The producer owns the workers' vector while it runs.
    m_workers.clear();
}

void PlainStream::copyPlain() {
    for (;;) {
        BlockPipeline::Block* block = m_pipeline.acquire();
        if (block == nullptr) {
            return;
        }
        block->plain.reserve(kCopySize);
        block->plain.size = m_input.read(block->plain.data(), kCopySize);
        bool atEnd = block->plain.size == 0;
        m_pipeline.complete(*block);
        if (atEnd) {
            return;
        }
    }
}

void PlainStream::unpackBzip2() {
    while (Bunzipper::unpackStream(m_input, m_pipeline) && skipPadding(kBzip2Magic, "bzip2")) {
    }
}

void PlainStream::unpackGzip() {
    Inflater inflater;
    do {
        std::optional<GzipMemberSizes> sizes = readGzipMemberHeader(m_input);
        if (!sizes) {
            m_input.readAhead();
        }
        bool goOn =
            sizes ? submitMember(sizes->packed, sizes->plain) : inflater.inflateStream(m_input, m_pipeline);
        if (!goOn) {
            return;
        }
    } while (skipPadding(kGzipMagic, "gzip"));
}

bool PlainStream::submitMember(std::size_t packedSize, std::size_t plainSize) {
    BlockPipeline::Block* block = m_pipeline.acquire();
    if (block == nullptr) {
        return false;
    }
    startWorkers();
    block->packed.reserve(kGzipMemberPackedLimit);
    block->packed.size = m_input.read(block->packed.data(), packedSize);
    // The worker is told the size that must come out in the size field of the buffer to fill.
    block->plain.size = plainSize;
    if (block->packed.size != packedSize) {
        block->error = "the archive ends in the middle of its compressed data";
        m_pipeline.complete(*block);
        return false;
    }
    m_pipeline.submit(*block);
    return true;
}

bool PlainStream::skipPadding(std::string_view magic, const std::string& method) {
    for (;;) {
        std::span<const std::uint8_t> rest = m_input.available();
        if (rest.empty()) {
            return false;
        }
        auto used = std::find_if(rest.begin(), rest.end(), [](std::uint8_t byte) { return byte != 0; });
        m_input.consume(static_cast<std::size_t>(used - rest.begin()));
        if (used == rest.end()) {
            continue;
        }
        if (!startsWith(m_input.peek(magic.size()), magic)) {
            throw ArchiveFailure("bytes that are no " + method + " data follow the archive");
        }
        return true;
    }
}

void PlainStream::startWorkers() {
    if (m_workers.empty()) {
        for (std::size_t i = 0; i < BlockPipeline::suitableWorkers(); ++i) {
            m_workers.emplace_back([this] { inflateSubmitted(); });
        }
    }
}

void PlainStream::inflateSubmitted() {
    std::unique_ptr<MemberInflater> inflater;
    while (BlockPipeline::Block* block = m_pipeline.takeWork()) {
        try {
            if (!inflater) {
                inflater = std::make_unique<MemberInflater>();
            }
            inflater->inflate(block->packed.bytes(), block->plain, block->plain.size);
        } catch (const std::exception& failure) {
            block->error = failure.what();
        }
        m_pipeline.complete(*block);
    }
}

}  // namespace zpk_archive
