// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <array>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <thread>
#include <unordered_set>
#include <vector>

#include "Archive/FileBatch.h"
#include "Base/ZPKFileDescriptor.h"
#include "Base/ZPKMutex.h"

namespace zpk_archive {

/// Batches of small files that threads of their own make while the owner goes on; where all are at work, the
/// owner lends a hand, and where none can be started, it makes all itself. The batches are some three MiB at
/// most. All operations are the owner's, in one thread.
class FilesInFlight {
public:
    /// With so many threads at most, which are started when the first batch is full.
    explicit FilesInFlight(std::size_t writers) : m_writerLimit(writers) {}
    /// What was not waited for is made whole, or not at all.
    ~FilesInFlight();
    FilesInFlight(const FilesInFlight&) = delete;
    FilesInFlight& operator=(const FilesInFlight&) = delete;

    /// How many threads make sense beside the owner's.
    static std::size_t suitableWriters();

    /// True when a file in flight may bear the name, or one that the file system takes for the same. A name
    /// that some file systems know under several forms counts as any other's.
    bool mayHold(const OpenFolder& folder, const char* leaf) const;
    /// The same, but for files that certainly are made before one that is added now.
    bool mayHoldBeside(const OpenFolder& folder, const char* leaf) const;

    /// The caller has made sure of `mayHoldBeside`. False when the files have to be waited for, since one
    /// could not be made.
    [[nodiscard]] bool add(const std::shared_ptr<OpenFolder>& folder, const char* leaf,
                           const std::string& name, std::span<const std::uint8_t> contents,
                           const ModeAndTime& modeAndTime);

    bool isEmpty() const { return m_begin == m_end && collecting().isEmpty(); }

    /// Takes the name of a file that cannot be made, and why.
    using Failed = std::function<void(const std::string& name, const std::string& reason)>;

    /// Comes back when nothing is in flight. Tells of what could not be made, in the order in which it was
    /// added. Throws WritingEnded when the volume is full: what was added later than the file that was told
    /// of last is not there then.
    void settle(const Failed& failed) ZPK_EXCLUDES(m_mutex);

private:
    static constexpr std::size_t kBatches = 16;
    static constexpr std::size_t kPlaces = kBatches + 1;

    FileBatch& at(std::size_t number) { return m_ring[number % kPlaces]; }
    FileBatch& collecting() { return at(m_end); }
    const FileBatch& collecting() const { return m_ring[m_end % kPlaces]; }

    void startWriters();
    void handOn() ZPK_EXCLUDES(m_mutex);
    bool makeRoom() ZPK_EXCLUDES(m_mutex);
    bool isDone(std::size_t number) ZPK_EXCLUDES(m_mutex);
    bool makeOne() ZPK_EXCLUDES(m_mutex);
    void waitFor(std::size_t number) ZPK_EXCLUDES(m_mutex);
    void makeUntilStopped() ZPK_EXCLUDES(m_mutex);
    void retireFirst();
    std::vector<FileBatch*> waitForAll() ZPK_EXCLUDES(m_mutex);
    void clear();

    std::size_t m_writerLimit;
    bool m_hasStarted = false;
    /// Makes sure that one file can be opened, however many descriptors the folders of files in flight take.
    ZPKFileDescriptor m_spare;
    std::array<FileBatch, kPlaces> m_ring;         ///< Each is its holder's.
    std::unordered_multiset<std::size_t> m_marks;  ///< Of the batches that were handed on.
    std::size_t m_begin = 0;                       ///< The first batch that is not retired.
    std::size_t m_end = 0;                         ///< The one that is being collected.

    ZPKMutex m_mutex;
    std::condition_variable m_added;
    std::condition_variable m_changed;
    std::size_t m_taken ZPK_GUARDED_BY(m_mutex) = 0;     ///< By the owner or a thread, to be made.
    std::size_t m_handedOn ZPK_GUARDED_BY(m_mutex) = 0;  ///< All before it may be taken.
    std::array<bool, kPlaces> m_isDone ZPK_GUARDED_BY(m_mutex) = {};
    bool m_isStopped ZPK_GUARDED_BY(m_mutex) = false;
    std::vector<std::jthread> m_writers;
};

}  // namespace zpk_archive
