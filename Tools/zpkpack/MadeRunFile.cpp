// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/MadeRunFile.h"

#include <elf.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>
#include <utility>
#include <vector>

#include "Base/ZPKDescriptorIO.h"
#include "Platform/ZPKFileHandle.h"
#include "Tools/zpkpack/PackagerFailure.h"

namespace zpk_packager {

namespace {

using EntryKind = ZPKRunFileEntry::Kind;

/// Whether the file begins as every program does, and so one file does.
bool isProgram(const std::string& path) {
    const ZPKResult<ZPKFileHandle> file = ZPKFileHandle::forReadingAtPath(path);
    std::array<char, SELFMAG> start{};
    return !file ||
           (ZPKDescriptorIO::readWholeAt(file->descriptor(), start.data(), start.size(), 0) == SELFMAG &&
            std::string_view(start.data(), start.size()) == ELFMAG);
}

ZPKRunFile opened(const std::string& path) {
    if (!isProgram(path)) {
        throw PackagerFailure(path, "it is no package, neither a bundle nor one file");
    }
    ZPKResult<ZPKRunFile> file = ZPKRunFile::open(path);
    if (!file) {
        throw PackagerFailure(file.failure());
    }
    return std::move(*file);
}

MadePackage::Kind kindOf(EntryKind kind) {
    switch (kind) {
        case EntryKind::Folder:
            return MadePackage::Kind::Folder;
        case EntryKind::Link:
            return MadePackage::Kind::Link;
        case EntryKind::PackedFile:
        case EntryKind::StoredFile:
            break;
    }
    return MadePackage::Kind::File;
}

}  // namespace

MadeRunFile::MadeRunFile(const std::string& path) : MadePackage(path), m_file(opened(path)) {
    std::vector<Item> items;
    const std::vector<ZPKRunFileEntry>& entries = m_file.table().entries;
    for (std::size_t index = 0; index < entries.size(); ++index) {
        const ZPKRunFileEntry& entry = entries[index];
        // The first component is the bundle itself. Two of them could not be told apart.
        const std::size_t separator = entry.path.find('/');
        if (entry.path.substr(0, separator) != entries.front().path) {
            throw PackagerFailure(path, "it holds more than one bundle");
        }
        if (separator != std::string::npos) {
            items.push_back(
                {entry.path.substr(separator + 1), kindOf(entry.kind), entry.mode, entry.size, entry.target});
            m_entries.emplace(items.back().path, index);
        }
    }
    setItems(std::move(items));
}

std::size_t MadeRunFile::read(const Item& file, std::uint64_t offset, void* bytes, std::size_t count) {
    const ZPKRunFileEntry& entry = m_file.table().entries[m_entries.at(file.path)];
    const auto wanted =
        static_cast<std::size_t>(std::min<std::uint64_t>(count, entry.size - std::min(offset, entry.size)));
    if (entry.kind == EntryKind::PackedFile) {
        std::memcpy(bytes, plainBlock(entry.block).data() + entry.offset + offset, wanted);
        return wanted;
    }
    const ssize_t got = ZPKDescriptorIO::readWholeAt(m_file.file().descriptor(), bytes, wanted,
                                                     static_cast<off_t>(entry.offset + offset));
    if (got < 0 || static_cast<std::size_t>(got) != wanted) {
        throw PackagerFailure(m_file.damage());
    }
    return wanted;
}

const ZPKPageMemory& MadeRunFile::plainBlock(std::size_t index) {
    if (!m_block || m_blockIndex != index) {
        // The old one goes first: two of them need not fit in memory.
        m_block.reset();
        ZPKResult<ZPKPageMemory> block = m_file.plainBlock(index);
        if (!block) {
            throw PackagerFailure(block.failure());
        }
        m_block.emplace(std::move(*block));
        m_blockIndex = index;
    }
    return *m_block;
}

}  // namespace zpk_packager
