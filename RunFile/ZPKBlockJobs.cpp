// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "RunFile/ZPKBlockJobs.h"

#include <algorithm>
#include <exception>
#include <string>
#include <thread>

ZPKOutcome ZPKBlockJobs::run(const Taker& take) {
    const std::size_t workers =
        std::min<std::size_t>(m_costs.size(), std::max(1U, std::thread::hardware_concurrency()));
    std::vector<std::thread> threads;
    for (std::size_t index = 0; index < workers; ++index) {
        try {
            threads.emplace_back([this] { work(); });
        } catch (const std::exception&) {
            // Fewer do it as well.
            break;
        }
    }
    ZPKOutcome outcome = takeAll(take, threads.empty());
    stop();
    for (std::thread& thread : threads) {
        thread.join();
    }
    return outcome;
}

ZPKOutcome ZPKBlockJobs::takeAll(const Taker& take, bool isAlone) {
    for (std::size_t index = 0; index < m_costs.size(); ++index) {
        const Made block = isAlone ? made(index) : waitForBlock(index);
        if (!*block) {
            return block->failure();
        }
        const std::string_view bytes = (*block)->bytes();
        if (ZPKOutcome taken = take(index, bytes); !taken) {
            return taken;
        }
        giveBack(isAlone ? 0 : bytes.size());
    }
    return {};
}

void ZPKBlockJobs::work() noexcept {
    while (const std::optional<std::size_t> index = waitForRoom()) {
        put(*index, made(*index));
    }
}

ZPKBlockJobs::Made ZPKBlockJobs::made(std::size_t index) const noexcept {
    try {
        return m_job(index);
    } catch (const std::exception& error) {
        return ZPKFailure("block " + std::to_string(index), error.what());
    }
}

/// The next block that is to be made, once there is room for it; none when all are begun.
std::optional<std::size_t> ZPKBlockJobs::waitForRoom() {
    ZPKMutexLock lock(m_mutex);
    while (!m_isStopped && m_begun < m_costs.size()) {
        if (m_taken == 0 || m_taken + m_costs[m_begun] <= m_memory) {
            m_taken += m_costs[m_begun];
            return m_begun++;
        }
        lock.wait(m_changed);
    }
    return std::nullopt;
}

/// Of what its making took, the block alone stays.
void ZPKBlockJobs::put(std::size_t index, Made block) {
    const ZPKMutexLock lock(m_mutex);
    m_taken -= m_costs[index] - (*block ? (*block)->bytes().size() : 0);
    m_blocks[index] = std::move(block);
    m_changed.notify_all();
}

ZPKBlockJobs::Made ZPKBlockJobs::waitForBlock(std::size_t index) {
    ZPKMutexLock lock(m_mutex);
    while (!m_blocks[index]) {
        lock.wait(m_changed);
    }
    return std::exchange(m_blocks[index], std::nullopt);
}

void ZPKBlockJobs::giveBack(std::uint64_t memory) {
    const ZPKMutexLock lock(m_mutex);
    m_taken -= memory;
    m_changed.notify_all();
}

void ZPKBlockJobs::stop() {
    const ZPKMutexLock lock(m_mutex);
    m_isStopped = true;
    m_changed.notify_all();
}
