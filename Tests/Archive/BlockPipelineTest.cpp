// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/BlockPipeline.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "Archive/Failure.h"

namespace {

using zpk_archive::ArchiveFailure;
using zpk_archive::BlockPipeline;

std::string failureOf(BlockPipeline& pipeline) {
    try {
        pipeline.next();
    } catch (const ArchiveFailure& failure) {
        return failure.what();
    }
    return "none";
}

TEST(BlockPipelineTest, ConsumerSeesTheProducersOrder) {
    BlockPipeline pipeline(4);
    std::vector<std::jthread> workers;
    for (int i = 0; i < 3; ++i) {
        workers.emplace_back([&] {
            while (BlockPipeline::Block* block = pipeline.takeWork()) {
                if (block->plain.size % 3 == 0) {
                    std::this_thread::yield();
                }
                block->packed.size = block->plain.size * 2;
                pipeline.complete(*block);
            }
        });
    }
    std::jthread producer([&] {
        for (std::size_t i = 1; i <= 1000; ++i) {
            BlockPipeline::Block* block = pipeline.acquire();
            block->plain.size = i;
            pipeline.submit(*block);
        }
        pipeline.finish("the end");
    });
    for (std::size_t i = 1; i <= 1000; ++i) {
        EXPECT_EQ(pipeline.next()->packed.size, 2 * i);
    }
    EXPECT_EQ(failureOf(pipeline), "the end");
}

TEST(BlockPipelineTest, StopEndsEveryWait) {
    BlockPipeline pipeline(1);
    std::jthread producer([&] {
        while (BlockPipeline::Block* block = pipeline.acquire()) {
            pipeline.complete(*block);
        }
    });
    std::jthread worker([&] { EXPECT_EQ(pipeline.takeWork(), nullptr); });
    EXPECT_NE(pipeline.next(), nullptr);
    pipeline.stop();
    EXPECT_EQ(pipeline.next(), nullptr);
}

TEST(BlockPipelineTest, ABlocksErrorComesInItsPlace) {
    BlockPipeline pipeline(3);
    pipeline.complete(*pipeline.acquire());
    BlockPipeline::Block* const bad = pipeline.acquire();
    bad->error = "damaged";
    pipeline.complete(*bad);
    pipeline.finish({});
    EXPECT_NE(pipeline.next(), nullptr);
    EXPECT_EQ(failureOf(pipeline), "damaged");
}

TEST(BlockPipelineTest, FinishHandsOnTheBlockThatIsStillOpen) {
    BlockPipeline pipeline(2);
    pipeline.acquire()->plain.size = 7;
    pipeline.finish("cut short");
    const BlockPipeline::Block* const block = pipeline.next();
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(block->plain.size, 7U);
    EXPECT_EQ(failureOf(pipeline), "cut short");
}

TEST(BlockPipelineTest, ReusedBlocksComeEmpty) {
    BlockPipeline pipeline(2);
    BlockPipeline::Block* const first = pipeline.acquire();
    first->plain.size = 5;
    first->packed.size = 6;
    pipeline.complete(*first);
    pipeline.complete(*pipeline.acquire());
    EXPECT_EQ(pipeline.next(), first);
    EXPECT_NE(pipeline.next(), first);
    EXPECT_EQ(pipeline.acquire(), first);
    EXPECT_EQ(first->plain.size, 0U);
    EXPECT_EQ(first->packed.size, 0U);
}

}  // namespace
