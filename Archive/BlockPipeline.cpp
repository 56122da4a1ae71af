// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/BlockPipeline.h"

#include <algorithm>
#include <thread>

#include "Archive/Failure.h"

namespace zpk_archive {

void ByteBuffer::reserve(std::size_t capacity) {
    if (capacity > m_capacity) {
        m_bytes = std::make_unique_for_overwrite<std::uint8_t[]>(capacity);
        m_capacity = capacity;
    }
}

BlockPipeline::BlockPipeline(std::size_t blocks) : m_ring(blocks) {}

BlockPipeline::Block* BlockPipeline::acquire() {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_stopped || m_acquired - m_consumed < m_ring.size(); });
    if (m_stopped) {
        return nullptr;
    }
    Block& block = m_ring[m_acquired % m_ring.size()];
    ++m_acquired;
    block.m_ready = false;
    block.plain.size = 0;
    block.packed.size = 0;
    block.error.clear();
    m_open = &block;
    return &block;
}

void BlockPipeline::submit(Block& block) {
    std::lock_guard lock(m_mutex);
    m_open = nullptr;
    m_work.push_back(&block);
    m_workAdded.notify_one();
}

void BlockPipeline::complete(Block& block) {
    std::lock_guard lock(m_mutex);
    if (m_open == &block) {
        m_open = nullptr;
    }
    block.m_ready = true;
    m_changed.notify_all();
}

void BlockPipeline::finish(const std::string& error) {
    std::lock_guard lock(m_mutex);
    if (m_open != nullptr) {
        m_open->m_ready = true;
        m_open = nullptr;
    }
    m_finished = true;
    m_finalError = error;
    m_changed.notify_all();
    m_workAdded.notify_all();
}

BlockPipeline::Block* BlockPipeline::takeWork() {
    std::unique_lock lock(m_mutex);
    m_workAdded.wait(lock, [this] { return m_stopped || m_finished || !m_work.empty(); });
    if (m_stopped || m_work.empty()) {
        return nullptr;
    }
    Block* block = m_work.front();
    m_work.pop_front();
    return block;
}

void BlockPipeline::releaseConsumed() {
    if (m_holding) {
        m_holding = false;
        ++m_consumed;
        m_changed.notify_all();
    }
}

BlockPipeline::Block* BlockPipeline::next() {
    std::unique_lock lock(m_mutex);
    releaseConsumed();
    Block& block = m_ring[m_consumed % m_ring.size()];
    m_changed.wait(lock, [&] {
        bool waiting = m_consumed < m_acquired;
        return m_stopped || (waiting ? block.m_ready : m_finished);
    });
    if (m_stopped) {
        return nullptr;
    }
    if (m_consumed == m_acquired) {
        if (!m_finalError.empty()) {
            throw ArchiveFailure(m_finalError);
        }
        return nullptr;
    }
    if (!block.error.empty()) {
        throw ArchiveFailure(block.error);
    }
    m_holding = true;
    return &block;
}

void BlockPipeline::stop() {
    std::lock_guard lock(m_mutex);
    m_stopped = true;
    m_changed.notify_all();
    m_workAdded.notify_all();
}

std::size_t workerCount() {
    return std::clamp(std::thread::hardware_concurrency(), 1U, 8U);
}

}  // namespace zpk_archive
