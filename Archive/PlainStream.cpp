// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/PlainStream.h"

#include <archive.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <utility>

#include "Archive/Failure.h"
#include "Archive/GzipMember.h"
#include "Archive/Inflater.h"

namespace zpk_archive {

namespace {

constexpr std::size_t kCopySize = std::size_t{256} * 1024;

bool startsWith(std::span<const std::uint8_t> bytes, std::string_view magic) {
    return bytes.size() >= magic.size() && std::memcmp(bytes.data(), magic.data(), magic.size()) == 0;
}

struct ReaderCloser {
    void operator()(archive* reader) const { archive_read_free(reader); }
};

/// Hands libarchive the input's bytes, and keeps the reason when they cannot be read.
class ByteSupply {
public:
    explicit ByteSupply(InputFile& input) : m_input(input) {}

    static la_ssize_t read(archive* reader, void* data, const void** bytes) {
        return static_cast<ByteSupply*>(data)->supply(reader, bytes);
    }

    [[noreturn]] void fail() const {
        throw ArchiveFailure(m_error.empty() ? "the bzip2 data are damaged or cut short" : m_error);
    }

private:
    la_ssize_t supply(archive* reader, const void** bytes) {
        // No exception may pass through the library's own frames.
        try {
            m_input.consume(m_handedOut);
            const std::span<const std::uint8_t> available = m_input.available();
            m_handedOut = available.size();
            *bytes = available.data();
            return static_cast<la_ssize_t>(available.size());
        } catch (const std::exception& failure) {
            m_error = failure.what();
            archive_set_error(reader, EIO, "%s", failure.what());
            return -1;
        }
    }

    InputFile& m_input;
    std::size_t m_handedOut = 0;
    std::string m_error;
};

}  // namespace

PlainStream::PlainStream(InputFile input)
    : m_input(std::move(input)), m_pipeline(BlockPipeline::suitableLength()) {
    std::span<const std::uint8_t> head = m_input.peek(3);
    void (PlainStream::*method)() = &PlainStream::copyPlain;
    if (head.empty()) {
        throw ArchiveFailure("the file is empty");
    }
    if (startsWith(head, "\x1f\x8b")) {
        method = &PlainStream::unpackGzip;
    } else if (startsWith(head, "BZh")) {
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
    ByteSupply supply(m_input);
    const std::unique_ptr<archive, ReaderCloser> reader(archive_read_new());
    archive_read_support_filter_bzip2(reader.get());
    archive_read_support_format_raw(reader.get());
    archive_entry* entry = nullptr;
    if (archive_read_open(reader.get(), &supply, nullptr, &ByteSupply::read, nullptr) != ARCHIVE_OK ||
        archive_read_next_header(reader.get(), &entry) != ARCHIVE_OK) {
        supply.fail();
    }
    for (BlockPipeline::Block* block = m_pipeline.acquire(); block != nullptr; block = m_pipeline.acquire()) {
        block->plain.reserve(kCopySize);
        la_ssize_t got = archive_read_data(reader.get(), block->plain.data(), kCopySize);
        block->plain.size = static_cast<std::size_t>(std::max<la_ssize_t>(got, 0));
        m_pipeline.complete(*block);
        if (got < 0) {
            supply.fail();
        }
        if (got == 0) {
            return;
        }
    }
}

void PlainStream::unpackGzip() {
    Inflater inflater;
    do {
        std::optional<GzipMemberSizes> sizes = readGzipMemberHeader(m_input);
        bool goOn =
            sizes ? submitMember(sizes->packed, sizes->plain) : inflater.inflateStream(m_input, m_pipeline);
        if (!goOn) {
            return;
        }
    } while (skipPadding());
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

bool PlainStream::skipPadding() {
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
        if (!startsWith(m_input.peek(2), "\x1f\x8b")) {
            throw ArchiveFailure("bytes that are no gzip data follow the archive");
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
    Inflater inflater;
    while (BlockPipeline::Block* block = m_pipeline.takeWork()) {
        try {
            inflater.inflateWhole(block->packed.bytes(), block->plain, block->plain.size);
        } catch (const std::exception& failure) {
            block->error = failure.what();
        }
        m_pipeline.complete(*block);
    }
}

}  // namespace zpk_archive
