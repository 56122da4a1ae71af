// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/FileBatch.h"

#include <fcntl.h>

#include <cerrno>
#include <utility>

#include "Archive/DiskCalls.h"
#include "Archive/Failure.h"
#include "Archive/SparseFileWriter.h"

namespace zpk_archive {

namespace {

constexpr std::size_t kFilesLimit = 64;
constexpr std::size_t kContentsLimit = std::size_t{128} << 10;

constexpr int kNewFileFlags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;

}  // namespace

void FileBatch::add(std::shared_ptr<OpenFolder> folder, const char* leaf, const std::string& name,
                    std::span<const std::uint8_t> contents, const ModeAndTime& modeAndTime) {
    const std::size_t leafStart = m_texts.size();
    m_texts.append(leaf).push_back('\0');
    const std::size_t nameStart = m_texts.size();
    m_texts.append(name).push_back('\0');
    const std::size_t start = m_contents.size();
    m_contents.insert(m_contents.end(), contents.begin(), contents.end());
    m_files.push_back({std::move(folder), leafStart, nameStart, start, contents.size(), modeAndTime});
}

void FileBatch::clear() {
    m_files.clear();
    m_made = 0;
    m_texts.clear();
    m_contents.clear();
    marks.clear();
}

bool FileBatch::isFull() const {
    // Names count, too: one may be as long as many files.
    return m_files.size() >= kFilesLimit || m_contents.size() + m_texts.size() >= kContentsLimit;
}

void FileBatch::makeSimply() {
    try {
        for (; !isMade(); passNext()) {
            make(next(), Place::FreeOfFiles);
        }
    } catch (const std::exception&) {
        // Whoever makes the rest meets the same failure, or none any more.
        return;
    }
}

void FileBatch::makeNext() {
    make(next(), Place::FreeOfAll);
}

bool FileBatch::unmake() {
    const bool wasAnyMade = m_made > 0;
    while (m_made > 0) {
        --m_made;
        DiskCalls::remove(next().folder->descriptor(), leafOf(next()), 0);
    }
    return wasAnyMade;
}

ZPKFileDescriptor FileBatch::create(const File& file, Place place) {
    const int folder = file.folder->descriptor();
    const char* const leaf = leafOf(file);
    const mode_t mode = file.modeAndTime.permissions;
    ZPKFileDescriptor made = DiskCalls::open(folder, leaf, kNewFileFlags, mode);
    if (!made.isOpen() && errno == EEXIST) {
        if (place == Place::FreeOfFiles) {
            DiskCalls::throwUnless(DiskCalls::remove(folder, leaf, 0));
        } else {
            DiskCalls::clearPlace(folder, leaf);
        }
        made = DiskCalls::open(folder, leaf, kNewFileFlags, mode);
    }
    DiskCalls::throwUnless(made.isOpen());
    return made;
}

void FileBatch::make(const File& file, Place place) {
    ZPKFileDescriptor made = create(file, place);
    try {
        SparseFileWriter writer(made.get());
        writer.write(std::span(m_contents).subspan(file.start, file.size));
        writer.finish();
        file.folder->giveModeAndTime(made.get(), file.modeAndTime);
        DiskCalls::throwUnless(made.close());
    } catch (const std::exception&) {
        removeHalf(file);
        throw;
    }
}

void FileBatch::removeHalf(const File& file) {
    // Half a file would pass for a whole one.
    if (!DiskCalls::remove(file.folder->descriptor(), leafOf(file), 0) && errno != ENOENT) {
        throw MemberFailure("half of it is left: " + ZPKFailure::systemReason(errno));
    }
}

}  // namespace zpk_archive
