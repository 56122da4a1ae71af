// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "RunFile/ZPKBlockJobs.h"

#include <gtest/gtest.h>
#include <zstd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr std::uint64_t kRoom = 100;

std::string plainOf(std::string_view packed) {
    std::string plain(1 << 16, '\0');
    plain.resize(::ZSTD_decompress(plain.data(), plain.size(), packed.data(), packed.size()));
    return plain;
}

ZPKResult<ZPKPackedBlock> blockOf(std::size_t index) {
    return ZPKPackedBlock::of("block " + std::to_string(index));
}

/// Costs that include the blocks themselves, which are some twenty bytes.
std::vector<std::uint64_t> costs(std::size_t count) {
    return std::vector<std::uint64_t>(count, kRoom);
}

/// What is taken, in the order in which it is.
struct Taken {
    ZPKOutcome operator()(std::size_t index, std::string_view packed) {
        numbers.push_back(index);
        texts.push_back(plainOf(packed));
        return {};
    }
    std::vector<std::size_t> numbers;
    std::vector<std::string> texts;
};

TEST(ZPKBlockJobsTest, BlocksComeInTheirOrderWhateverTheOrderOfTheirMaking) {
    std::mutex mutex;
    std::condition_variable changed;
    bool isSecondMade = false;
    ZPKBlockJobs jobs(costs(20), 20 * kRoom, [&](std::size_t index) {
        std::unique_lock<std::mutex> lock(mutex);
        if (index == 0 && std::thread::hardware_concurrency() > 1) {
            EXPECT_TRUE(changed.wait_for(lock, std::chrono::seconds(60), [&] { return isSecondMade; }));
        }
        isSecondMade = isSecondMade || index == 1;
        changed.notify_all();
        return blockOf(index);
    });
    Taken taken;
    ASSERT_TRUE(jobs.run(std::ref(taken)));
    ASSERT_EQ(taken.numbers.size(), 20U);
    for (std::size_t index = 0; index < 20; ++index) {
        EXPECT_EQ(taken.numbers[index], index);
        EXPECT_EQ(taken.texts[index], "block " + std::to_string(index));
    }
}

TEST(ZPKBlockJobsTest, NoMoreMemoryIsTakenThanThereIsButByASingleBlock) {
    const std::vector<std::uint64_t> sizes = {40, 70, 90, 250, 60, 40, 40, 100, 30, 30, 30, 30};
    std::atomic<std::uint64_t> now = 0;
    std::atomic<bool> isTooMuch = false;
    ZPKBlockJobs jobs(sizes, kRoom, [&](std::size_t index) {
        const std::uint64_t together = now += sizes[index];
        // Others get the time to begin what they may not.
        std::this_thread::yield();
        isTooMuch = isTooMuch || (together > kRoom && together != sizes[index]);
        ZPKResult<ZPKPackedBlock> block = blockOf(index);
        now -= sizes[index];
        return block;
    });
    Taken taken;
    ASSERT_TRUE(jobs.run(std::ref(taken)));
    EXPECT_EQ(taken.numbers.size(), sizes.size());
    EXPECT_FALSE(isTooMuch);
}

TEST(ZPKBlockJobsTest, BlocksThatWaitToBeTakenCountAsMemory) {
    std::atomic<std::size_t> begun = 0;
    std::size_t beforeAll = 0;
    const std::size_t size = blockOf(0)->bytes().size();
    ZPKBlockJobs jobs(std::vector<std::uint64_t>(50, size), 2 * size, [&](std::size_t index) {
        ++begun;
        return blockOf(index);
    });
    ASSERT_TRUE(jobs.run([&](std::size_t index, std::string_view) {
        beforeAll = std::max<std::size_t>(beforeAll, begun - index);
        return ZPKOutcome();
    }));
    EXPECT_EQ(begun, 50U);
    EXPECT_LE(beforeAll, 3U);
}

TEST(ZPKBlockJobsTest, TheFirstFailureEndsIt) {
    ZPKBlockJobs jobs(costs(1000), 4 * kRoom, [&](std::size_t index) -> ZPKResult<ZPKPackedBlock> {
        if (index == 3) {
            throw std::runtime_error("a fault");
        }
        return index == 5 ? ZPKFailure("five", "another") : blockOf(index);
    });
    Taken taken;
    const ZPKOutcome outcome = jobs.run(std::ref(taken));
    ASSERT_FALSE(outcome);
    EXPECT_EQ(outcome.failure().message(), "block 3: a fault");
    EXPECT_EQ(taken.numbers, (std::vector<std::size_t>{0, 1, 2}));
}

TEST(ZPKBlockJobsTest, ABlockThatCannotBePutSomewhereEndsIt) {
    std::atomic<std::size_t> begun = 0;
    ZPKBlockJobs jobs(costs(1000), 4 * kRoom, [&](std::size_t index) {
        ++begun;
        return blockOf(index);
    });
    const ZPKOutcome outcome = jobs.run([](std::size_t index, std::string_view) {
        return index == 2 ? ZPKOutcome(ZPKFailure("file", "the disk is full")) : ZPKOutcome();
    });
    ASSERT_FALSE(outcome);
    EXPECT_EQ(outcome.failure().reason(), "the disk is full");
    EXPECT_LT(begun, 1000U);
}

TEST(ZPKBlockJobsTest, NothingIsAlsoDone) {
    ZPKBlockJobs jobs({}, kRoom, &blockOf);
    Taken taken;
    EXPECT_TRUE(jobs.run(std::ref(taken)));
    EXPECT_TRUE(taken.numbers.empty());
}

}  // namespace
