// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <string>
#include <vector>

#include "Archive/ByteBuffer.h"
#include "Base/ZPKMutex.h"

namespace zpk_archive {

/// A ring of blocks between one producer, any number of workers and one consumer, each in its own
/// thread. The consumer gets the blocks in the producer's order, whatever order the workers end in.
/// The ring's length bounds the memory: the producer waits while it is full.
class BlockPipeline {
public:
    /// In the hands of one thread at a time, from the call that gives it to the one that hands it on.
    struct Block {
        ByteBuffer plain;
        ByteBuffer packed;
        std::string error;  ///< Not empty: this block could not be made, and nothing follows it.
    };

    /// How many workers make sense on this machine.
    static std::size_t suitableWorkers();

    /// The ring's length with which so many workers seldom wait: each has a block, and two wait on either
    /// side. Blocks are most of the memory that an archive takes.
    static std::size_t suitableLength() { return suitableWorkers() + 4; }

    explicit BlockPipeline(std::size_t blocks);

    /// Producer: the next block to fill, with both sizes 0; null after `stop`.
    Block* acquire() ZPK_EXCLUDES(m_mutex);
    /// Producer: the acquired block needs a worker.
    void submit(Block& block) ZPK_EXCLUDES(m_mutex);
    /// Producer and workers: the block is complete.
    void complete(Block& block) ZPK_EXCLUDES(m_mutex);
    /// Producer: no more blocks; a non-empty error comes to the consumer after the last one. A block that
    /// was acquired and not yet handed on goes out with what is in it.
    void finish(const std::string& error) ZPK_EXCLUDES(m_mutex);

    /// Worker: a block to work on; null when there will be none.
    Block* takeWork() ZPK_EXCLUDES(m_mutex);

    /// Consumer: the next block, valid until the next call; null at the end.
    /// Throws ArchiveFailure where the producer or a worker failed.
    Block* next() ZPK_EXCLUDES(m_mutex);

    /// Makes every wait end at once; for the consumer (or producer) that gives up.
    void stop() ZPK_EXCLUDES(m_mutex);

private:
    void markComplete(const Block& block) ZPK_REQUIRES(m_mutex);
    void releaseConsumed() ZPK_REQUIRES(m_mutex);
    bool isNextThere() const ZPK_REQUIRES(m_mutex);

    std::vector<Block> m_ring;  ///< Never grows; its blocks are their holders'.

    ZPKMutex m_mutex;
    std::condition_variable m_changed;
    std::condition_variable m_workAdded;
    std::vector<bool> m_isComplete ZPK_GUARDED_BY(m_mutex);  ///< Of each place in the ring.
    std::deque<Block*> m_work ZPK_GUARDED_BY(m_mutex);
    Block* m_open ZPK_GUARDED_BY(m_mutex) = nullptr;  ///< Acquired and not yet handed on.
    std::size_t m_acquired ZPK_GUARDED_BY(m_mutex) = 0;
    std::size_t m_consumed ZPK_GUARDED_BY(m_mutex) = 0;
    bool m_isHolding ZPK_GUARDED_BY(m_mutex) = false;  ///< The consumer has the block of `m_consumed`.
    bool m_isFinished ZPK_GUARDED_BY(m_mutex) = false;
    bool m_isStopped ZPK_GUARDED_BY(m_mutex) = false;
    std::string m_finalError ZPK_GUARDED_BY(m_mutex);
};

}  // namespace zpk_archive
