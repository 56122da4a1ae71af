// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "RunFile/ZPKRunFile.h"

#include <zstd.h>

#include <algorithm>
#include <cerrno>
#include <optional>
#include <utility>
#include <vector>

#include "Base/ZPKDescriptorIO.h"
#include "RunFile/ZPKProgramFilter.h"
#include "RunFile/ZPKRunFileChecksum.h"
#include "RunFile/ZPKRunFileTrailer.h"

namespace {

constexpr std::uint64_t kLargestProgram = std::uint64_t{8} << 20;

ZPKFailure damaged(const std::string& path) {
    return {path, "the file was cut short or changed; get it again"};
}

ZPKOutcome readInto(const ZPKFileHandle& file, std::uint64_t offset, char* bytes, std::size_t size) {
    const ssize_t count =
        ZPKDescriptorIO::readWholeAt(file.descriptor(), bytes, size, static_cast<off_t>(offset));
    if (count < 0) {
        return ZPKFailure::ofSystem(file.path(), errno);
    }
    return static_cast<std::size_t>(count) == size ? ZPKOutcome() : damaged(file.path());
}

ZPKResult<std::string> readAt(const ZPKFileHandle& file, std::uint64_t offset, std::uint64_t size) {
    std::string bytes(static_cast<std::size_t>(size), '\0');
    const ZPKOutcome read = readInto(file, offset, bytes.data(), bytes.size());
    return read ? ZPKResult<std::string>(std::move(bytes)) : read.failure();
}

/// Fails unless a part has this checksum. Little of it is in memory at a time.
ZPKOutcome checkPart(const ZPKFileHandle& file, std::uint64_t offset, std::uint64_t size,
                     std::uint64_t checksum) {
    constexpr std::uint64_t kStep = 65536;
    std::string bytes(static_cast<std::size_t>(std::min(size, kStep)), '\0');
    ZPKRunFileChecksum found;
    for (std::uint64_t done = 0; done < size; done += bytes.size()) {
        bytes.resize(static_cast<std::size_t>(std::min(size - done, kStep)));
        if (ZPKOutcome read = readInto(file, offset + done, bytes.data(), bytes.size()); !read) {
            return read;
        }
        found.add(bytes);
    }
    return found.value() == checksum ? ZPKOutcome() : damaged(file.path());
}

using Range = std::pair<std::uint64_t, std::uint64_t>;

/// Where things with checksums of their own lie, in the order of the file.
std::vector<Range> coveredRanges(const ZPKRunFileTrailer& trailer, const ZPKRunFileTable& table) {
    std::vector<Range> ranges{{0, trailer.programSize}};
    for (const ZPKRunFileBlock& block : table.blocks) {
        ranges.emplace_back(block.offset, block.packedSize);
    }
    for (const ZPKRunFileEntry& entry : table.entries) {
        if (entry.kind == ZPKRunFileEntry::Kind::StoredFile) {
            ranges.emplace_back(entry.offset, entry.size);
        }
    }
    ranges.emplace_back(trailer.tableOffset, trailer.tableSize);
    std::sort(ranges.begin(), ranges.end());
    return ranges;
}

/// Between its parts the file holds zeros alone, so that no byte of it can change unseen.
bool hasOnlyZerosBetween(const ZPKFileHandle& file, const std::vector<Range>& ranges) {
    constexpr std::uint64_t kLargestGap = 65536;
    std::uint64_t end = 0;
    for (const auto& [offset, size] : ranges) {
        if (offset > end) {
            const std::uint64_t gap = offset - end;
            const ZPKResult<std::string> bytes = readAt(file, end, std::min(gap, kLargestGap));
            if (!bytes || gap > kLargestGap || bytes->find_first_not_of('\0') != std::string::npos) {
                return false;
            }
        }
        end = std::max(end, offset + size);
    }
    return true;
}

ZPKResult<ZPKRunFileTrailer> trailerOf(const ZPKFileHandle& file) {
    if (file.size() < ZPKRunFileTrailer::kSize) {
        return damaged(file.path());
    }
    const std::uint64_t offset = file.size() - ZPKRunFileTrailer::kSize;
    const ZPKResult<std::string> bytes = readAt(file, offset, ZPKRunFileTrailer::kSize);
    if (!bytes) {
        return bytes.failure();
    }
    const std::optional<ZPKRunFileTrailer> trailer = ZPKRunFileTrailer::decoded(*bytes, file.size());
    if (!trailer || trailer->tableSize > ZPKRunFileTable::kLargestSize ||
        trailer->programSize > kLargestProgram) {
        return damaged(file.path());
    }
    return *trailer;
}

}  // namespace

ZPKResult<ZPKRunFile> ZPKRunFile::open(const std::string& path) {
    ZPKResult<ZPKFileHandle> file = ZPKFileHandle::forReadingAtPath(path);
    if (!file) {
        return file.failure();
    }
    const ZPKResult<ZPKRunFileTrailer> trailer = trailerOf(*file);
    if (!trailer) {
        return trailer.failure();
    }
    if (const ZPKOutcome program = checkPart(*file, 0, trailer->programSize, trailer->programChecksum);
        !program) {
        return program.failure();
    }
    const ZPKResult<std::string> bytes = readAt(*file, trailer->tableOffset, trailer->tableSize);
    if (!bytes) {
        return bytes.failure();
    }
    if (ZPKRunFileChecksum::of(*bytes) != trailer->tableChecksum) {
        return damaged(path);
    }
    ZPKResult<ZPKRunFileTable> table = ZPKRunFileTable::decoded(*bytes, trailer->tableOffset, path);
    if (!table) {
        return table.failure();
    }
    if (!hasOnlyZerosBetween(*file, coveredRanges(*trailer, *table))) {
        return damaged(path);
    }
    return ZPKRunFile(std::move(*file), std::move(*table));
}

ZPKOutcome ZPKRunFile::read(std::uint64_t offset, char* bytes, std::size_t size) const {
    return readInto(m_file, offset, bytes, size);
}

ZPKResult<ZPKPageMemory> ZPKRunFile::plainBlock(std::size_t index) const {
    const ZPKRunFileBlock& block = m_table.blocks[index];
    ZPKPageMemory packed(static_cast<std::size_t>(block.packedSize));
    if (const ZPKOutcome got = read(block.offset, packed.data(), packed.size()); !got) {
        return got.failure();
    }
    if (ZPKRunFileChecksum::of(packed.view()) != block.checksum) {
        return damage();
    }
    ZPKPageMemory plain(static_cast<std::size_t>(block.plainSize));
    const std::size_t size = ::ZSTD_decompress(plain.data(), plain.size(), packed.data(), packed.size());
    if (::ZSTD_isError(size) != 0 || size != plain.size()) {
        return damage();
    }
    // Programs become themselves again at their places, which no two files share.
    for (const ZPKRunFileEntry& entry : m_table.entries) {
        if (entry.kind == ZPKRunFileEntry::Kind::PackedFile && entry.block == index) {
            ZPKProgramFilter::unpack(plain.data() + entry.offset, static_cast<std::size_t>(entry.size));
        }
    }
    return plain;
}

ZPKFailure ZPKRunFile::damage() const {
    return damaged(m_file.path());
}
