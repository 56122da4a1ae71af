// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "RunFile/ZPKRunFileTable.h"

#include <algorithm>
#include <set>

#include "RunFile/ZPKByteOrder.h"

namespace {

constexpr std::uint32_t kPermissionBits = 0777;

bool isComponent(std::string_view component) {
    return !component.empty() && component != "." && component != ".." &&
           component.find('\0') == std::string_view::npos;
}

bool isInnerPath(std::string_view path) {
    for (std::size_t start = 0; start <= path.size();) {
        const std::size_t end = std::min(path.find('/', start), path.size());
        if (!isComponent(path.substr(start, end - start))) {
            return false;
        }
        start = end + 1;
    }
    return true;
}

bool liesWithin(std::uint64_t offset, std::uint64_t size, std::uint64_t whole) {
    return offset <= whole && size <= whole - offset;
}

std::uint64_t segmentCount(std::uint64_t size) {
    return size / ZPKRunFileTable::kSegmentSize + (size % ZPKRunFileTable::kSegmentSize != 0 ? 1 : 0);
}

/// Whether each path is new, free of ways out, and below a folder that was named before it.
class PathCheck {
public:
    bool takes(const ZPKRunFileEntry& entry) {
        if (!isInnerPath(entry.path) || !m_paths.insert(entry.path).second) {
            return false;
        }
        const std::size_t separator = entry.path.rfind('/');
        if (separator != std::string::npos && m_folders.count(entry.path.substr(0, separator)) == 0) {
            return false;
        }
        if (entry.kind == ZPKRunFileEntry::Kind::Folder) {
            m_folders.insert(entry.path);
        }
        return true;
    }

private:
    std::set<std::string> m_paths;
    std::set<std::string> m_folders;
};

bool hasSoundPlace(const ZPKRunFileEntry& entry, const std::vector<ZPKRunFileBlock>& blocks,
                   std::uint64_t dataSize) {
    switch (entry.kind) {
        case ZPKRunFileEntry::Kind::Folder:
            return true;
        case ZPKRunFileEntry::Kind::PackedFile:
            return entry.block < blocks.size() &&
                   liesWithin(entry.offset, entry.size, blocks[entry.block].plainSize);
        case ZPKRunFileEntry::Kind::StoredFile:
            return liesWithin(entry.offset, entry.size, dataSize) &&
                   entry.checksums.size() == segmentCount(entry.size);
        case ZPKRunFileEntry::Kind::Link:
            return !entry.target.empty() && entry.target.find('\0') == std::string::npos;
    }
    return false;
}

bool isFile(const ZPKRunFileEntry& entry) {
    return entry.kind == ZPKRunFileEntry::Kind::PackedFile || entry.kind == ZPKRunFileEntry::Kind::StoredFile;
}

void writeEntry(ZPKByteWriter& out, const ZPKRunFileEntry& entry) {
    out.number(static_cast<std::uint8_t>(entry.kind));
    out.number(entry.mode);
    out.text(entry.path);
    out.number(entry.size);
    out.number(entry.offset);
    out.number(entry.block);
    out.number(static_cast<std::uint32_t>(entry.checksums.size()));
    for (const std::uint64_t checksum : entry.checksums) {
        out.number(checksum);
    }
    out.text(entry.target);
}

ZPKRunFileEntry readEntry(ZPKByteReader& in) {
    ZPKRunFileEntry entry;
    const auto kind = in.number<std::uint8_t>();
    if (kind > static_cast<std::uint8_t>(ZPKRunFileEntry::Kind::Link)) {
        in.fail();
        return entry;
    }
    entry.kind = static_cast<ZPKRunFileEntry::Kind>(kind);
    entry.mode = in.number<std::uint32_t>() & kPermissionBits;
    entry.path = in.text();
    entry.size = in.number<std::uint64_t>();
    entry.offset = in.number<std::uint64_t>();
    entry.block = in.number<std::uint32_t>();
    const auto checksums = in.number<std::uint32_t>();
    for (std::uint32_t index = 0; index < checksums && in.isGood(); ++index) {
        entry.checksums.push_back(in.number<std::uint64_t>());
    }
    entry.target = in.text();
    return entry;
}

}  // namespace

std::string ZPKRunFileTable::encoded() const {
    ZPKByteWriter out;
    out.text(program);
    out.number(static_cast<std::uint32_t>(blocks.size()));
    for (const ZPKRunFileBlock& block : blocks) {
        out.number(block.offset);
        out.number(block.packedSize);
        out.number(block.plainSize);
        out.number(block.checksum);
    }
    out.number(static_cast<std::uint32_t>(entries.size()));
    for (const ZPKRunFileEntry& entry : entries) {
        writeEntry(out, entry);
    }
    return out.bytes();
}

ZPKResult<ZPKRunFileTable> ZPKRunFileTable::decoded(std::string_view bytes, std::uint64_t dataSize,
                                                    const std::string& path) {
    ZPKRunFileTable table;
    ZPKByteReader in(bytes);
    table.program = in.text();
    const auto blockCount = in.number<std::uint32_t>();
    for (std::uint32_t index = 0; index < blockCount && in.isGood(); ++index) {
        ZPKRunFileBlock block;
        block.offset = in.number<std::uint64_t>();
        block.packedSize = in.number<std::uint64_t>();
        block.plainSize = in.number<std::uint64_t>();
        block.checksum = in.number<std::uint64_t>();
        table.blocks.push_back(block);
    }
    const auto entryCount = in.number<std::uint32_t>();
    for (std::uint32_t index = 0; index < entryCount && in.isGood(); ++index) {
        table.entries.push_back(readEntry(in));
    }
    if (!in.isGood() || !in.isAtEnd() || !table.isSound(dataSize)) {
        return ZPKFailure(path, "the list of what it holds is damaged");
    }
    return table;
}

bool ZPKRunFileTable::isSound(std::uint64_t dataSize) const {
    const bool soundBlocks = std::all_of(blocks.begin(), blocks.end(), [&](const ZPKRunFileBlock& block) {
        return liesWithin(block.offset, block.packedSize, dataSize) && block.packedSize <= kLargestBlock &&
               block.plainSize <= kLargestBlock;
    });
    const bool hasProgram = std::any_of(entries.begin(), entries.end(), [&](const ZPKRunFileEntry& entry) {
        return entry.path == program && isFile(entry);
    });
    PathCheck paths;
    return soundBlocks && hasProgram &&
           std::all_of(entries.begin(), entries.end(), [&](const ZPKRunFileEntry& entry) {
               return paths.takes(entry) && hasSoundPlace(entry, blocks, dataSize);
           });
}
