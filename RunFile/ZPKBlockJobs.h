// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "Base/ZPKFailure.h"
#include "Base/ZPKMutex.h"
#include "RunFile/ZPKPackedBlock.h"

/// Makes blocks on all processors, as far as the memory goes, and hands them out in their order, so that what
/// is made of them does not depend on the number of processors. Used once.
class ZPKBlockJobs {
public:
    /// Makes the block of that number, on any thread.
    using Job = std::function<ZPKResult<ZPKPackedBlock>(std::size_t)>;
    /// Gets one block after the other, on the thread that called `run`.
    using Taker = std::function<ZPKOutcome(std::size_t, std::string_view)>;

    /// A block for each of the `costs`, which say how much memory, in bytes, its making takes. No more than
    /// `memory` is taken at once, but by a single block that takes more.
    ZPKBlockJobs(std::vector<std::uint64_t> costs, std::uint64_t memory, Job job)
        : m_costs(std::move(costs)), m_memory(memory), m_job(std::move(job)), m_blocks(m_costs.size()) {}

    /// Ends with the first failure, of a job or of `take`, in the order of the blocks.
    ZPKOutcome run(const Taker& take) ZPK_EXCLUDES(m_mutex);

private:
    using Made = std::optional<ZPKResult<ZPKPackedBlock>>;

    void work() noexcept ZPK_EXCLUDES(m_mutex);
    Made made(std::size_t index) const noexcept;
    std::optional<std::size_t> waitForRoom() ZPK_EXCLUDES(m_mutex);
    void put(std::size_t index, Made block) ZPK_EXCLUDES(m_mutex);
    Made waitForBlock(std::size_t index) ZPK_EXCLUDES(m_mutex);
    ZPKOutcome takeAll(const Taker& take, bool isAlone) ZPK_EXCLUDES(m_mutex);
    void giveBack(std::uint64_t memory) ZPK_EXCLUDES(m_mutex);
    void stop() ZPK_EXCLUDES(m_mutex);

    const std::vector<std::uint64_t> m_costs;
    const std::uint64_t m_memory;
    const Job m_job;

    ZPKMutex m_mutex;
    std::condition_variable m_changed;
    std::vector<Made> m_blocks ZPK_GUARDED_BY(m_mutex);
    std::size_t m_begun ZPK_GUARDED_BY(m_mutex) = 0;
    std::uint64_t m_taken ZPK_GUARDED_BY(m_mutex) = 0;
    bool m_isStopped ZPK_GUARDED_BY(m_mutex) = false;
};
