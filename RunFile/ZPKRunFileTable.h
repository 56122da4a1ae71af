// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "Base/ZPKFailure.h"

/// A piece of the file that holds several small files, compressed together.
struct ZPKRunFileBlock {
    /// Where the compressed bytes begin in the file, and how many they are.
    std::uint64_t offset = 0;
    std::uint64_t packedSize = 0;
    std::uint64_t plainSize = 0;
    /// Of the compressed bytes.
    std::uint64_t checksum = 0;
};

/// One thing that is placed.
struct ZPKRunFileEntry {
    enum class Kind : std::uint8_t {
        Folder = 0,
        /// Lies in a block.
        PackedFile = 1,
        /// Lies in the file as it is.
        StoredFile = 2,
        Link = 3,
    };

    Kind kind = Kind::Folder;
    /// Permission bits.
    std::uint32_t mode = 0;
    /// Relative to the folder that things are placed in; components are separated by "/".
    std::string path;
    /// Of a file, in bytes.
    std::uint64_t size = 0;
    /// Where a file begins: in its block, or in the whole file where it is stored.
    std::uint64_t offset = 0;
    /// The block of a packed file, by its place in the table.
    std::uint32_t block = 0;
    /// Of a stored file: one for each started `ZPKRunFileTable::kSegmentSize` bytes.
    std::vector<std::uint64_t> checksums;
    /// Where a link leads.
    std::string target;
};

/// What a run file holds and where: everything but the bytes themselves. A value.
///
/// In the file: the program's path, a count and the blocks, a count and the entries, all numbers
/// little-endian, texts as a length and their bytes. Every folder stands before what it holds.
class ZPKRunFileTable {
public:
    static constexpr std::uint64_t kSegmentSize = std::uint64_t{32} << 20;

    /// No larger block is written or read: a worker holds one in memory.
    static constexpr std::uint64_t kLargestBlock = std::uint64_t{16} << 20;

    /// As it stands in the file: some ten thousand files, where a bundle has two hundred. Read, it takes ten
    /// times as much memory.
    static constexpr std::uint64_t kLargestSize = std::uint64_t{2} << 20;

    /// The file that is executed once all are placed, by its path among the entries.
    std::string program;
    std::vector<ZPKRunFileBlock> blocks;
    std::vector<ZPKRunFileEntry> entries;

    std::string encoded() const;

    /// The table that these bytes say. Fails unless it can be followed without leaving the first
    /// `dataSize` bytes of the file or the folder that things are placed in. The failure names `path`.
    static ZPKResult<ZPKRunFileTable> decoded(std::string_view bytes, std::uint64_t dataSize,
                                              const std::string& path);

private:
    bool isSound(std::uint64_t dataSize) const;
};
