// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "RunFile/ZPKRunFilePlacer.h"

#include <fcntl.h>
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

/// How much of a stored file is looked at in one go.
constexpr std::uint64_t kStep = std::uint64_t{1} << 20;

/// Copies a range without its bytes passing through this process; false where the kernel cannot.
bool copyInKernel(int source, off_t from, int destination, off_t to, std::uint64_t size) {
    while (size > 0) {
        const ssize_t count = ZPKDescriptorIO::retry([&] {
            return ::copy_file_range(source, &from, destination, &to, static_cast<std::size_t>(size), 0);
        });
        if (count <= 0) {
            return false;
        }
        size -= static_cast<std::uint64_t>(count);
    }
    return true;
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
    for (std::size_t job = m_next++; job < blocks + m_pieces.size() && !m_hasFailed; job = m_next++) {
        try {
            const ZPKOutcome outcome = job < blocks ? placeBlock(job) : placePiece(m_pieces[job - blocks]);
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
    const ZPKResult<std::string> plain = m_runFile.plainBlock(index);
    return plain ? writeFilesOfBlock(index, *plain) : ZPKOutcome(plain.failure());
}

ZPKOutcome ZPKRunFilePlacer::writeFilesOfBlock(std::size_t index, const std::string& plain) {
    for (const std::size_t entryIndex : m_entriesOfBlock[index]) {
        const ZPKRunFileEntry& entry = m_runFile.table().entries[entryIndex];
        ZPKFileDescriptor file(::openat(m_folder.get(), entry.path.c_str(),
                                        O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kGrowingFileMode));
        if (!file.isOpen() ||
            !ZPKDescriptorIO::writeWhole(
                file.get(), std::string_view(plain).substr(static_cast<std::size_t>(entry.offset),
                                                           static_cast<std::size_t>(entry.size))) ||
            ::fchmod(file.get(), entry.mode) != 0 || !file.close()) {
            return failureAt(entry, errno);
        }
    }
    return {};
}

ZPKOutcome ZPKRunFilePlacer::placePiece(const StoredPiece& piece) {
    const ZPKRunFileEntry& entry = m_runFile.table().entries[piece.entry];
    const std::uint64_t begin = piece.segment * ZPKRunFileTable::kSegmentSize;
    const std::uint64_t size = std::min(ZPKRunFileTable::kSegmentSize, entry.size - begin);
    const int source = m_runFile.file().descriptor();
    const auto from = static_cast<off_t>(entry.offset + begin);
    ZPKFileDescriptor file(::openat(m_folder.get(), entry.path.c_str(), O_WRONLY | O_CLOEXEC));
    if (!file.isOpen()) {
        return failureAt(entry, errno);
    }
    const bool isCopied = copyInKernel(source, from, file.get(), static_cast<off_t>(begin), size);
    ZPKRunFileChecksum checksum;
    for (std::uint64_t done = 0; done < size;) {
        const ZPKResult<std::string> bytes =
            m_runFile.bytesAt(entry.offset + begin + done, std::min(kStep, size - done));
        if (!bytes) {
            return bytes.failure();
        }
        if (!isCopied && !ZPKDescriptorIO::writeWholeAt(file.get(), bytes->data(), bytes->size(),
                                                        static_cast<off_t>(begin + done))) {
            return failureAt(entry, errno);
        }
        checksum.add(*bytes);
        done += bytes->size();
    }
    if (!file.close()) {
        return failureAt(entry, errno);
    }
    return checksum.value() == entry.checksums[piece.segment] ? ZPKOutcome() : m_runFile.damage();
}
