// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "RunFile/ZPKRunFilePlacer.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <exception>
#include <thread>

#include "Base/ZPKDescriptorIO.h"
#include "Base/ZPKPath.h"
#include "RunFile/ZPKRunFileChecksum.h"

namespace {

using Kind = ZPKRunFileEntry::Kind;

constexpr mode_t kFolderMode = 0755;
constexpr mode_t kGrowingFileMode = 0600;

/// How much of a stored file is read in one go: little enough to be still in the processor's cache when it is
/// looked at and written.
constexpr std::uint64_t kStep = std::uint64_t{256} << 10;

/// A file system that has files share bytes does so by blocks.
constexpr std::uint64_t kBlock = 4096;

/// Has two files share a range, as far as that goes by whole blocks; how many bytes that are, 0 where the
/// file system has no such thing.
std::uint64_t shareRange(int source, std::uint64_t from, int destination, std::uint64_t to,
                         std::uint64_t size) {
    file_clone_range range{};
    range.src_fd = source;
    range.src_offset = from;
    range.src_length = size / kBlock * kBlock;
    range.dest_offset = to;
    const bool isShared = range.src_length > 0 && ::ioctl(destination, FICLONERANGE, &range) == 0;
    return isShared ? range.src_length : 0;
}

}  // namespace

ZPKOutcome ZPKRunFilePlacer::placeIn(const std::string& folder) {
    m_folderPath = folder;
    m_folder = ZPKFileDescriptor(::open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!m_folder.isOpen()) {
        return ZPKFailure::ofSystem(folder, errno);
    }
    if (ZPKOutcome made = makeFoldersAndFiles(); !made) {
        return made;
    }
    if (ZPKOutcome worked = workOnAllProcessors(); !worked) {
        return worked;
    }
    return makeLinks();
}

ZPKFailure ZPKRunFilePlacer::failureAt(const ZPKRunFileEntry& entry, int error) const {
    return ZPKFailure::ofSystem(ZPKPath::join(m_folderPath, entry.path), error);
}

/// Stored files are made here, since several workers write to one.
ZPKOutcome ZPKRunFilePlacer::makeFoldersAndFiles() {
    const std::vector<ZPKRunFileEntry>& entries = m_runFile.table().entries;
    m_entriesOfBlock.resize(m_runFile.table().blocks.size());
    for (std::size_t index = 0; index < entries.size(); ++index) {
        const ZPKRunFileEntry& entry = entries[index];
        if (entry.kind == Kind::PackedFile) {
            m_entriesOfBlock[entry.block].push_back(index);
        } else if (entry.kind == Kind::Folder) {
            if (::mkdirat(m_folder.get(), entry.path.c_str(), kFolderMode) != 0) {
                return failureAt(entry, errno);
            }
        } else if (entry.kind == Kind::StoredFile) {
            const ZPKFileDescriptor file(::openat(m_folder.get(), entry.path.c_str(),
                                                  O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kGrowingFileMode));
            if (!file.isOpen() || ::ftruncate(file.get(), static_cast<off_t>(entry.size)) != 0) {
                return failureAt(entry, errno);
            }
            for (std::size_t segment = 0; segment < entry.checksums.size(); ++segment) {
                m_pieces.push_back({index, segment});
            }
        }
    }
    return {};
}

ZPKOutcome ZPKRunFilePlacer::makeLinks() {
    for (const ZPKRunFileEntry& entry : m_runFile.table().entries) {
        const bool isMade = entry.kind == Kind::Link
                                ? ::symlinkat(entry.target.c_str(), m_folder.get(), entry.path.c_str()) == 0
                                : entry.kind != Kind::StoredFile ||
                                      ::fchmodat(m_folder.get(), entry.path.c_str(), entry.mode, 0) == 0;
        if (!isMade) {
            return failureAt(entry, errno);
        }
    }
    return {};
}

ZPKOutcome ZPKRunFilePlacer::workOnAllProcessors() {
    const std::size_t jobs = m_entriesOfBlock.size() + m_pieces.size();
    const std::size_t helpers =
        std::min<std::size_t>(jobs, std::max(1U, std::thread::hardware_concurrency()));
    std::vector<std::thread> threads;
    for (std::size_t index = 1; index < helpers; ++index) {
        try {
            threads.emplace_back([this] { work(); });
        } catch (const std::exception&) {
            // Fewer do it as well.
            break;
        }
    }
    work();
    for (std::thread& thread : threads) {
        thread.join();
    }
    const ZPKMutexLock lock(m_mutex);
    return m_failures.empty() ? ZPKOutcome() : ZPKOutcome(m_failures.front());
}

void ZPKRunFilePlacer::work() noexcept {
    const std::size_t blocks = m_entriesOfBlock.size();
    std::string buffer;
    for (std::size_t job = m_next++; job < blocks + m_pieces.size() && !m_hasFailed; job = m_next++) {
        try {
            const ZPKOutcome outcome =
                job < blocks ? placeBlock(job) : placePiece(m_pieces[job - blocks], buffer);
            if (!outcome) {
                keepFailure(outcome.failure());
            }
        } catch (const std::exception& error) {
            keepFailure({m_runFile.file().path(), error.what()});
        }
    }
}

void ZPKRunFilePlacer::keepFailure(const ZPKFailure& failure) {
    m_hasFailed = true;
    const ZPKMutexLock lock(m_mutex);
    m_failures.push_back(failure);
}

ZPKOutcome ZPKRunFilePlacer::placeBlock(std::size_t index) {
    const ZPKResult<ZPKPageMemory> plain = m_runFile.plainBlock(index);
    return plain ? writeFilesOfBlock(index, plain->view()) : ZPKOutcome(plain.failure());
}

ZPKOutcome ZPKRunFilePlacer::writeFilesOfBlock(std::size_t index, std::string_view plain) {
    for (const std::size_t entryIndex : m_entriesOfBlock[index]) {
        const ZPKRunFileEntry& entry = m_runFile.table().entries[entryIndex];
        ZPKFileDescriptor file(::openat(m_folder.get(), entry.path.c_str(),
                                        O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kGrowingFileMode));
        if (!file.isOpen() ||
            !ZPKDescriptorIO::writeWhole(file.get(), plain.substr(static_cast<std::size_t>(entry.offset),
                                                                  static_cast<std::size_t>(entry.size))) ||
            ::fchmod(file.get(), entry.mode) != 0 || !file.close()) {
            return failureAt(entry, errno);
        }
    }
    return {};
}

ZPKOutcome ZPKRunFilePlacer::placePiece(const StoredPiece& piece, std::string& buffer) {
    const ZPKRunFileEntry& entry = m_runFile.table().entries[piece.entry];
    const std::uint64_t begin = piece.segment * ZPKRunFileTable::kSegmentSize;
    const std::uint64_t size = std::min(ZPKRunFileTable::kSegmentSize, entry.size - begin);
    const int source = m_runFile.file().descriptor();
    const std::uint64_t from = entry.offset + begin;
    ZPKFileDescriptor file(::openat(m_folder.get(), entry.path.c_str(), O_WRONLY | O_CLOEXEC));
    if (!file.isOpen()) {
        return failureAt(entry, errno);
    }
    // What is shared is only looked at. Anything else is read once, looked at and written: a copy in the
    // kernel would have it read twice.
    const std::uint64_t shared = shareRange(source, from, file.get(), begin, size);
    ZPKRunFileChecksum checksum;
    buffer.resize(kStep);
    for (std::uint64_t done = 0; done < size;) {
        const auto count = static_cast<std::size_t>(std::min(kStep, (done < shared ? shared : size) - done));
        if (ZPKOutcome read = m_runFile.read(from + done, buffer.data(), count); !read) {
            return read;
        }
        checksum.add(std::string_view(buffer).substr(0, count));
        if (done >= shared && !ZPKDescriptorIO::writeWholeAt(file.get(), buffer.data(), count,
                                                             static_cast<off_t>(begin + done))) {
            return failureAt(entry, errno);
        }
        done += count;
    }
    if (!file.close()) {
        return failureAt(entry, errno);
    }
    return checksum.value() == entry.checksums[piece.segment] ? ZPKOutcome() : m_runFile.damage();
}
