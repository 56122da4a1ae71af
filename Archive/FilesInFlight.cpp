// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/FilesInFlight.h"

#include <fcntl.h>

#include <algorithm>
#include <string_view>
#include <utility>

#include "Archive/BlockPipeline.h"
#include "Archive/Failure.h"
#include "Base/ZPKDescriptorIO.h"

namespace zpk_archive {

namespace {

/// More wait for each other: file systems make some of a file's way under one lock.
constexpr std::size_t kWritersLimit = 3;

constexpr std::size_t kAnyName = 1;
constexpr std::size_t kSeveralForms = 2;
constexpr std::size_t kOneForm = 3;

std::size_t mixed(std::size_t hash, std::size_t value) {
    return (hash ^ value) * 0x100000001b3U;
}

std::size_t markOf(const OpenFolder& folder, std::size_t kind) {
    const std::hash<std::size_t> hash;
    return mixed(
        mixed(mixed(0xcbf29ce484222325U, hash(folder.identity().device)), hash(folder.identity().inode)),
        kind);
}

/// Some file systems know letters in two cases and as composed characters, short forms of long names, and
/// names without the point or space at their end.
bool hasOneForm(std::string_view leaf) {
    const auto isPlain = [](char byte) { return byte >= ' ' && byte < '\x7f' && byte != '~'; };
    return std::all_of(leaf.begin(), leaf.end(), isPlain) && leaf.back() != '.' && leaf.back() != ' ';
}

std::size_t markOf(const OpenFolder& folder, std::string_view leaf) {
    if (!hasOneForm(leaf)) {
        return markOf(folder, kSeveralForms);
    }
    std::size_t mark = markOf(folder, kOneForm);
    for (const char byte : leaf) {
        mark = mixed(mark, static_cast<unsigned char>(byte >= 'A' && byte <= 'Z' ? byte | 0x20 : byte));
    }
    return mark;
}

template <typename Has>
bool isKnown(const OpenFolder& folder, std::string_view leaf, const Has& has) {
    return hasOneForm(leaf) ? has(markOf(folder, leaf)) || has(markOf(folder, kSeveralForms))
                            : has(markOf(folder, kAnyName));
}

/// Removes what was made after the batch, whose room it may have taken; whether there was anything.
bool unmakeBehind(const std::vector<FileBatch*>& batches, std::size_t index) {
    bool wasAnyMade = false;
    for (std::size_t later = index + 1; later < batches.size(); ++later) {
        wasAnyMade = batches[later]->unmake() || wasAnyMade;
    }
    return wasAnyMade;
}

/// Closes `spare` before it believes a failure.
void makeRest(const std::vector<FileBatch*>& batches, std::size_t index, ZPKFileDescriptor& spare,
              const FilesInFlight::Failed& failed) {
    FileBatch& batch = *batches[index];
    while (!batch.isMade()) {
        try {
            batch.makeNext();
        } catch (const MemberFailure& failure) {
            if (spare.isOpen()) {
                static_cast<void>(spare.close());
                continue;
            }
            failed(batch.nameOfNext(), failure.what());
        } catch (const VolumeFullFailure& failure) {
            if (unmakeBehind(batches, index)) {
                continue;
            }
            failed(batch.nameOfNext(), failure.what());
            throw WritingEnded();
        }
        batch.passNext();
    }
}

}  // namespace

std::size_t FilesInFlight::suitableWriters() {
    return std::min(BlockPipeline::suitableWorkers() - 1, kWritersLimit);
}

FilesInFlight::~FilesInFlight() {
    const ZPKMutexLock lock(m_mutex);
    m_isStopped = true;
    m_added.notify_all();
}

bool FilesInFlight::mayHoldBeside(const OpenFolder& folder, const char* leaf) const {
    // Of most folders all that is in flight is collected.
    return m_begin != m_end &&
           isKnown(folder, leaf, [this](std::size_t mark) { return m_marks.contains(mark); });
}

bool FilesInFlight::mayHold(const OpenFolder& folder, const char* leaf) const {
    const std::vector<std::size_t>& marks = collecting().marks;
    return mayHoldBeside(folder, leaf) || (!marks.empty() && isKnown(folder, leaf, [&](std::size_t mark) {
               return std::find(marks.begin(), marks.end(), mark) != marks.end();
           }));
}

bool FilesInFlight::add(const std::shared_ptr<OpenFolder>& folder, const char* leaf, const std::string& name,
                        std::span<const std::uint8_t> contents, const ModeAndTime& modeAndTime) {
    FileBatch& batch = collecting();
    if (!batch.endsIn(*folder)) {
        batch.marks.push_back(markOf(*folder, kAnyName));
    }
    batch.marks.push_back(markOf(*folder, std::string_view(leaf)));
    batch.add(folder, leaf, name, contents, modeAndTime);
    if (!m_spare.isOpen()) {
        m_spare = ZPKFileDescriptor(
            ZPKDescriptorIO::retry([&] { return ::fcntl(folder->descriptor(), F_DUPFD_CLOEXEC, 0); }));
    }
    if (!batch.isFull()) {
        return m_spare.isOpen();
    }
    startWriters();
    handOn();
    return makeRoom();
}

void FilesInFlight::startWriters() {
    if (std::exchange(m_hasStarted, true)) {
        return;
    }
    try {
        m_writers.reserve(m_writerLimit);
        while (m_writers.size() < m_writerLimit) {
            m_writers.emplace_back([this] { makeUntilStopped(); });
        }
    } catch (const std::exception&) {
        // The owner makes what no thread takes.
        return;
    }
}

void FilesInFlight::handOn() {
    m_marks.insert(collecting().marks.begin(), collecting().marks.end());
    const ZPKMutexLock lock(m_mutex);
    m_isDone[m_end % kPlaces] = false;
    m_handedOn = ++m_end;
    m_added.notify_one();
}

bool FilesInFlight::makeRoom() {
    const std::size_t limit = m_writers.empty() ? 1 : kBatches;
    for (;;) {
        while (m_begin != m_end && isDone(m_begin)) {
            if (!at(m_begin).isMade()) {
                return false;
            }
            retireFirst();
        }
        if (m_end - m_begin < limit) {
            return true;
        }
        if (!makeOne()) {
            waitFor(m_begin);
        }
    }
}

std::vector<FileBatch*> FilesInFlight::waitForAll() {
    // The last ones are made here and now: waking a thread for them would take longer.
    collecting().makeSimply();
    while (makeOne()) {
    }
    std::vector<FileBatch*> batches;
    for (std::size_t number = m_begin; number != m_end; ++number) {
        waitFor(number);
        batches.push_back(&at(number));
    }
    batches.push_back(&collecting());
    return batches;
}

void FilesInFlight::settle(const Failed& failed) {
    if (isEmpty()) {
        return;
    }
    const std::vector<FileBatch*> batches = waitForAll();
    try {
        for (std::size_t index = 0; index < batches.size(); ++index) {
            makeRest(batches, index, m_spare, failed);
        }
    } catch (const WritingEnded&) {
        clear();
        throw;
    }
    clear();
}

void FilesInFlight::clear() {
    while (m_begin != m_end) {
        retireFirst();
    }
    collecting().clear();
}

void FilesInFlight::retireFirst() {
    FileBatch& batch = at(m_begin++);
    for (const std::size_t mark : batch.marks) {
        m_marks.erase(m_marks.find(mark));
    }
    batch.clear();
}

bool FilesInFlight::isDone(std::size_t number) {
    const ZPKMutexLock lock(m_mutex);
    return m_isDone[number % kPlaces];
}

void FilesInFlight::waitFor(std::size_t number) {
    ZPKMutexLock lock(m_mutex);
    while (!m_isDone[number % kPlaces]) {
        lock.wait(m_changed);
    }
}

bool FilesInFlight::makeOne() {
    std::size_t number = 0;
    {
        const ZPKMutexLock lock(m_mutex);
        if (m_taken == m_handedOn) {
            return false;
        }
        number = m_taken++;
    }
    at(number).makeSimply();
    const ZPKMutexLock lock(m_mutex);
    m_isDone[number % kPlaces] = true;
    m_changed.notify_all();
    return true;
}

void FilesInFlight::makeUntilStopped() {
    for (;;) {
        while (makeOne()) {
        }
        ZPKMutexLock lock(m_mutex);
        while (!m_isStopped && m_taken == m_handedOn) {
            lock.wait(m_added);
        }
        if (m_isStopped) {
            return;
        }
    }
}

}  // namespace zpk_archive
