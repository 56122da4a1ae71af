// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/BlockPipeline.h"

#include <algorithm>
#include <thread>

#include "Archive/Failure.h"

namespace zpk_archive {

std::size_t BlockPipeline::suitableWorkers() {
    // Asked once: a process that has given up its rights may not be told any more.
    static const std::size_t workers = std::clamp(std::thread::hardware_concurrency(), 1U, 8U);
    return workers;
}

BlockPipeline::BlockPipeline(std::size_t blocks) : m_ring(blocks), m_isComplete(blocks) {}

BlockPipeline::Block* BlockPipeline::acquire() {
    ZPKMutexLock lock(m_mutex);
    while (!m_isStopped && m_acquired - m_consumed == m_ring.size()) {
        lock.wait(m_changed);
    }
    if (m_isStopped) {
        return nullptr;
    }
    const std::size_t place = m_acquired % m_ring.size();
    ++m_acquired;
    m_isComplete[place] = false;
    m_open = &m_ring[place];
    m_open->plain.size = 0;
    m_open->packed.size = 0;
    m_open->error.clear();
    return m_open;
}

void BlockPipeline::submit(Block& block) {
    const ZPKMutexLock lock(m_mutex);
    m_open = nullptr;
    m_work.push_back(&block);
    m_workAdded.notify_one();
}

void BlockPipeline::complete(Block& block) {
    const ZPKMutexLock lock(m_mutex);
    markComplete(block);
}

void BlockPipeline::markComplete(const Block& block) {
    if (m_open == &block) {
        m_open = nullptr;
    }
    m_isComplete[static_cast<std::size_t>(&block - m_ring.data())] = true;
    m_changed.notify_all();
}

void BlockPipeline::finish(const std::string& error) {
    const ZPKMutexLock lock(m_mutex);
    if (m_open != nullptr) {
        markComplete(*m_open);
    }
    m_isFinished = true;
    m_finalError = error;
    m_changed.notify_all();
    m_workAdded.notify_all();
}

BlockPipeline::Block* BlockPipeline::takeWork() {
    ZPKMutexLock lock(m_mutex);
    while (!m_isStopped && !m_isFinished && m_work.empty()) {
        lock.wait(m_workAdded);
    }
    if (m_isStopped || m_work.empty()) {
        return nullptr;
    }
    Block* const block = m_work.front();
    m_work.pop_front();
    return block;
}

void BlockPipeline::releaseConsumed() {
    if (m_isHolding) {
        m_isHolding = false;
        ++m_consumed;
        m_changed.notify_all();
    }
}

bool BlockPipeline::isNextThere() const {
    return m_consumed < m_acquired && m_isComplete[m_consumed % m_ring.size()];
}

BlockPipeline::Block* BlockPipeline::next() {
    ZPKMutexLock lock(m_mutex);
    releaseConsumed();
    while (!m_isStopped && !isNextThere() && !(m_isFinished && m_consumed == m_acquired)) {
        lock.wait(m_changed);
    }
    if (m_isStopped) {
        return nullptr;
    }
    Block& block = m_ring[m_consumed % m_ring.size()];
    const bool isAtEnd = m_consumed == m_acquired;
    const std::string& error = isAtEnd ? m_finalError : block.error;
    if (!error.empty()) {
        throw ArchiveFailure(error);
    }
    m_isHolding = !isAtEnd;
    return isAtEnd ? nullptr : &block;
}

void BlockPipeline::stop() {
    const ZPKMutexLock lock(m_mutex);
    m_isStopped = true;
    m_changed.notify_all();
    m_workAdded.notify_all();
}

}  // namespace zpk_archive
