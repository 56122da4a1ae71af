// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "RunFile/ZPKRunFileWriter.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <utility>

#include "Base/ZPKDescriptorIO.h"
#include "Base/ZPKPath.h"
#include "Platform/ZPKFileHandle.h"
#include "Platform/ZPKFileManager.h"
#include "RunFile/ZPKBlockJobs.h"
#include "RunFile/ZPKProgramFilter.h"
#include "RunFile/ZPKRunFileChecksum.h"
#include "RunFile/ZPKRunFileTrailer.h"

namespace {

using Kind = ZPKRunFileEntry::Kind;

constexpr mode_t kExecutable = 0777;

/// Stored files begin at blocks of the file system, which it may then share instead of copying them.
constexpr std::uint64_t kAlignment = 4096;

/// The most of a group of several files: small enough that two are compressed at once in little memory, large
/// enough that what is alike meets in one group.
constexpr std::uint64_t kGroupSize = std::uint64_t{5} << 20;

/// A file of this size is stored when compressing its first piece of this size gains too little.
constexpr std::uint64_t kTrialSize = std::uint64_t{1} << 20;
constexpr double kLeastGain = 0.05;

/// A larger one is stored in any case: a block is held in memory when it is placed.
constexpr std::uint64_t kLargestPackedFile = std::uint64_t{14} << 20;

/// What compressing blocks may take of memory at once: the whole program stays below 64 MiB.
constexpr std::uint64_t kMemory = std::uint64_t{58} << 20;

constexpr std::uint64_t kLargestProgram = std::uint64_t{8} << 20;

ZPKResult<std::string> wholeFile(const std::string& path, std::uint64_t limit) {
    const ZPKResult<ZPKFileHandle> file = ZPKFileHandle::forReadingAtPath(path);
    return file ? file->contents(static_cast<std::size_t>(limit)) : ZPKResult<std::string>(file.failure());
}

/// Whether a file is so large or so dense that it is better stored as it is.
ZPKResult<bool> isToBeStored(const std::string& path, std::uint64_t size) {
    if (size < kTrialSize || size > kLargestPackedFile) {
        return size > kLargestPackedFile;
    }
    const ZPKResult<ZPKFileHandle> file = ZPKFileHandle::forReadingAtPath(path);
    if (!file) {
        return file.failure();
    }
    std::string bytes(kTrialSize, '\0');
    if (ZPKDescriptorIO::readWholeAt(file->descriptor(), bytes.data(), bytes.size(), 0) < 0) {
        return ZPKFailure::ofSystem(path, errno);
    }
    const ZPKResult<ZPKPackedBlock> packed = ZPKPackedBlock::quicklyOf(bytes);
    if (!packed) {
        return packed.failure();
    }
    return static_cast<double>(packed->bytes().size()) > static_cast<double>(kTrialSize) * (1 - kLeastGain);
}

}  // namespace

ZPKRunFileWriter::ZPKRunFileWriter(std::string program, std::string bundle, const std::string& launcher)
    : m_program(std::move(program)), m_bundle(std::move(bundle)) {
    m_table.program = ZPKPath::join(ZPKPath::lastComponent(m_bundle), launcher);
}

ZPKOutcome ZPKRunFileWriter::write(const std::string& output) {
    if (ZPKOutcome listed = listBundle(); !listed) {
        return listed;
    }
    ZPKResult<ZPKReplacementFile> file = ZPKReplacementFile::forPath(output, kExecutable);
    if (!file) {
        return file.failure();
    }
    m_output = &*file;
    using Step = ZPKOutcome (ZPKRunFileWriter::*)();
    for (const Step step : {&ZPKRunFileWriter::writeProgram, &ZPKRunFileWriter::writeGroups,
                            &ZPKRunFileWriter::writeStoredFiles, &ZPKRunFileWriter::writeTable}) {
        if (ZPKOutcome done = (this->*step)(); !done) {
            return done;
        }
    }
    return file->commit();
}

std::string ZPKRunFileWriter::sourcePath(const ZPKRunFileEntry& entry) const {
    return ZPKPath::join(ZPKPath::parent(m_bundle), entry.path);
}

/// By name, so that one bundle gives one file; folders come before what they hold that way.
ZPKOutcome ZPKRunFileWriter::listBundle() {
    std::vector<std::string> paths;
    if (ZPKOutcome listed = ZPKFileManager::subpathsOfFolder(m_bundle, paths); !listed) {
        return listed;
    }
    const std::string name = ZPKPath::lastComponent(m_bundle);
    for (std::string& path : paths) {
        path = ZPKPath::join(name, path);
    }
    paths.push_back(name);
    std::sort(paths.begin(), paths.end());
    for (const std::string& path : paths) {
        if (ZPKOutcome added = addItem(path); !added) {
            return added;
        }
    }
    return {};
}

ZPKOutcome ZPKRunFileWriter::addItem(const std::string& path) {
    ZPKRunFileEntry entry;
    entry.path = path;
    const std::string source = sourcePath(entry);
    struct stat attributes;
    if (::lstat(source.c_str(), &attributes) != 0) {
        return ZPKFailure::ofSystem(source, errno);
    }
    entry.mode = attributes.st_mode & 0777U;
    if (S_ISLNK(attributes.st_mode)) {
        entry.kind = Kind::Link;
        entry.target.resize(PATH_MAX);
        const ssize_t length = ::readlink(source.c_str(), entry.target.data(), entry.target.size());
        if (length < 0) {
            return ZPKFailure::ofSystem(source, errno);
        }
        entry.target.resize(static_cast<std::size_t>(length));
    } else if (S_ISREG(attributes.st_mode)) {
        entry.size = static_cast<std::uint64_t>(attributes.st_size);
        const ZPKResult<bool> isStored = isToBeStored(source, entry.size);
        if (!isStored) {
            return isStored.failure();
        }
        entry.kind = *isStored ? Kind::StoredFile : Kind::PackedFile;
    } else if (!S_ISDIR(attributes.st_mode)) {
        return ZPKFailure(source, "neither a file, a folder nor a link");
    }
    m_table.entries.push_back(std::move(entry));
    if (m_table.entries.back().kind == Kind::PackedFile) {
        addToGroup(m_table.entries.size() - 1);
    }
    return {};
}

void ZPKRunFileWriter::addToGroup(std::size_t index) {
    ZPKRunFileEntry& entry = m_table.entries[index];
    if (m_groups.empty() || m_groups.back().size + entry.size > kGroupSize) {
        m_groups.emplace_back();
    }
    Group& group = m_groups.back();
    entry.block = static_cast<std::uint32_t>(m_groups.size() - 1);
    entry.offset = group.size;
    group.size += entry.size;
    group.entries.push_back(index);
}

ZPKOutcome ZPKRunFileWriter::append(std::string_view bytes) {
    if (!ZPKDescriptorIO::writeWhole(m_output->descriptor(), bytes)) {
        return ZPKFailure::ofSystem(m_output->path(), errno);
    }
    m_size += bytes.size();
    return {};
}

ZPKOutcome ZPKRunFileWriter::pad() {
    return append(
        std::string(static_cast<std::size_t>((kAlignment - m_size % kAlignment) % kAlignment), '\0'));
}

ZPKOutcome ZPKRunFileWriter::writeProgram() {
    const ZPKResult<std::string> program = wholeFile(m_program, kLargestProgram);
    if (!program) {
        return program.failure();
    }
    m_programSize = program->size();
    m_programChecksum = ZPKRunFileChecksum::of(*program);
    return append(*program);
}

ZPKResult<ZPKPackedBlock> ZPKRunFileWriter::packedGroup(const Group& group) const {
    std::string plain;
    plain.reserve(static_cast<std::size_t>(group.size));
    for (const std::size_t index : group.entries) {
        const ZPKRunFileEntry& entry = m_table.entries[index];
        const ZPKResult<std::string> bytes = wholeFile(sourcePath(entry), kLargestPackedFile);
        if (!bytes) {
            return bytes.failure();
        }
        if (bytes->size() != entry.size) {
            return ZPKFailure(sourcePath(entry), "the file changes while it is packed");
        }
        plain += *bytes;
        ZPKProgramFilter::pack(plain.data() + entry.offset, bytes->size());
    }
    return ZPKPackedBlock::of(plain);
}

ZPKOutcome ZPKRunFileWriter::writeGroups() {
    std::vector<std::uint64_t> costs;
    for (const Group& group : m_groups) {
        costs.push_back(ZPKPackedBlock::memoryFor(group.size));
    }
    ZPKBlockJobs jobs(std::move(costs), kMemory,
                      [&](std::size_t index) { return packedGroup(m_groups[index]); });
    return jobs.run([&](std::size_t index, std::string_view packed) {
        m_table.blocks.push_back(
            {m_size, packed.size(), m_groups[index].size, ZPKRunFileChecksum::of(packed)});
        ZPKOutcome written = append(packed);
        m_written(m_groups[index].size);
        return written;
    });
}

ZPKOutcome ZPKRunFileWriter::writeStoredFiles() {
    for (ZPKRunFileEntry& entry : m_table.entries) {
        if (entry.kind == Kind::StoredFile) {
            if (ZPKOutcome stored = storeFile(entry); !stored) {
                return stored;
            }
        }
    }
    return {};
}

ZPKOutcome ZPKRunFileWriter::storeFile(ZPKRunFileEntry& entry) {
    if (ZPKOutcome padded = pad(); !padded) {
        return padded;
    }
    entry.offset = m_size;
    const std::string source = sourcePath(entry);
    const ZPKResult<ZPKFileHandle> file = ZPKFileHandle::forReadingAtPath(source);
    if (!file) {
        return file.failure();
    }
    for (std::uint64_t begin = 0; begin < entry.size; begin += ZPKRunFileTable::kSegmentSize) {
        const std::uint64_t size = std::min(ZPKRunFileTable::kSegmentSize, entry.size - begin);
        std::string bytes(static_cast<std::size_t>(size), '\0');
        const ssize_t count = ZPKDescriptorIO::readWholeAt(file->descriptor(), bytes.data(), bytes.size(),
                                                           static_cast<off_t>(begin));
        if (count < 0) {
            return ZPKFailure::ofSystem(source, errno);
        }
        if (static_cast<std::uint64_t>(count) != size) {
            return ZPKFailure(source, "the file changes while it is packed");
        }
        entry.checksums.push_back(ZPKRunFileChecksum::of(bytes));
        if (ZPKOutcome written = append(bytes); !written) {
            return written;
        }
        m_written(size);
    }
    return {};
}

ZPKOutcome ZPKRunFileWriter::writeTable() {
    ZPKRunFileTrailer trailer;
    const std::string table = m_table.encoded();
    if (table.size() > ZPKRunFileTable::kLargestSize) {
        return ZPKFailure(m_bundle, "it holds too many files beside its archives");
    }
    trailer.programSize = m_programSize;
    trailer.programChecksum = m_programChecksum;
    trailer.tableOffset = m_size;
    trailer.tableSize = table.size();
    trailer.tableChecksum = ZPKRunFileChecksum::of(table);
    return append(table + trailer.encoded());
}
