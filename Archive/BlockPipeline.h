// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <vector>

namespace zpk_archive {

/// Bytes whose storage is kept from one use to the next.
class ByteBuffer {
public:
    /// Makes room for `capacity` bytes; what was in it is lost when it has to grow.
    void reserve(std::size_t capacity);

    std::uint8_t* data() { return m_bytes.get(); }
    std::span<const std::uint8_t> bytes() const { return {m_bytes.get(), size}; }

    std::size_t size = 0;

private:
    std::unique_ptr<std::uint8_t[]> m_bytes;
    std::size_t m_capacity = 0;
};

/// A ring of blocks between one producer, any number of workers and one consumer, each in its own
/// thread. The consumer gets the blocks in the producer's order, whatever order the workers end in.
/// The ring's length bounds the memory: the producer waits while it is full.
class BlockPipeline {
public:
    struct Block {
        ByteBuffer plain;
        ByteBuffer packed;
        std::string error;  ///< Not empty: this block could not be made, and nothing follows it.

    private:
        friend class BlockPipeline;
        bool m_ready = false;
    };

    explicit BlockPipeline(std::size_t blocks);

    /// Producer: the next block to fill, with both sizes 0; null after `stop`.
    Block* acquire();
    /// Producer: the acquired block needs a worker.
    void submit(Block& block);
    /// Producer and workers: the block is complete.
    void complete(Block& block);
    /// Producer: no more blocks; a non-empty error comes to the consumer after the last one. A block that
    /// was acquired and not yet handed on goes out with what is in it.
    void finish(const std::string& error);

    /// Worker: a block to work on; null when there will be none.
    Block* takeWork();

    /// Consumer: the next block, valid until the next call; null at the end.
    /// Throws ArchiveFailure where the producer or a worker failed.
    Block* next();

    /// Makes every wait end at once; for the consumer (or producer) that gives up.
    void stop();

private:
    void releaseConsumed();

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::condition_variable m_workAdded;
    std::vector<Block> m_ring;
    std::deque<Block*> m_work;
    Block* m_open = nullptr;
    std::size_t m_acquired = 0;
    std::size_t m_consumed = 0;
    bool m_holding = false;
    bool m_finished = false;
    bool m_stopped = false;
    std::string m_finalError;
};

/// How many workers make sense here, given that each has about two blocks in flight.
std::size_t workerCount();

}  // namespace zpk_archive
