// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Base/ZPKFailure.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <memory>

namespace {

TEST(ZPKFailureTest, NamesTheFileAndTheReason) {
    const ZPKFailure failure("/a/b", "Is no list");
    EXPECT_EQ(failure.path(), "/a/b");
    EXPECT_EQ(failure.reason(), "Is no list");
    EXPECT_EQ(failure.message(), "/a/b: Is no list");
    EXPECT_EQ(ZPKFailure::ofSystem("/a", ENOENT).message(), "/a: No such file or directory");
}

TEST(ZPKFailureTest, MessageIsSafeOnATerminal) {
    EXPECT_EQ(ZPKFailure("/a\x1B[2J\n", "b\rc").message(), "/a\\x1b[2J\\n: b\\x0dc");
    EXPECT_EQ(ZPKFailure("/a\x1B", "").path(), "/a\x1B") << "the path itself stays as it is";
}

TEST(ZPKFailureTest, MessageIsNoLongerThanALineOfATrace) {
    const std::string huge(std::size_t{1} << 20, 'a');
    const std::string cut = std::string(4096, 'a') + "...";
    EXPECT_EQ(ZPKFailure(huge, huge).message(), cut + ": " + cut);
    EXPECT_EQ(ZPKFailure(huge, huge).path(), huge);
}

TEST(ZPKFailureTest, EveryErrorHasAText) {
    EXPECT_EQ(ZPKFailure::systemReason(EACCES), "Permission denied");
    EXPECT_EQ(ZPKFailure::systemReason(ENOSPC), "No space left on device");
    EXPECT_EQ(ZPKFailure::systemReason(12345), "Unknown error 12345");
    EXPECT_EQ(ZPKFailure::systemReason(-1), "Unknown error -1");
}

TEST(ZPKOutcomeTest, IsSuccessOrAFailureWithItsCause) {
    const ZPKOutcome success;
    EXPECT_TRUE(success);
    success.ignore();
    ZPKOutcome outcome = ZPKFailure("/a", "Why");
    ASSERT_FALSE(outcome);
    EXPECT_EQ(outcome.failure().message(), "/a: Why");
    outcome = ZPKOutcome();
    EXPECT_TRUE(outcome);
}

TEST(ZPKOutcomeDeathTest, SuccessHasNoCause) {
    EXPECT_DEATH(static_cast<void>(ZPKOutcome().failure()), "m_failure");
}

TEST(ZPKResultTest, HoldsAValueOrAFailure) {
    ZPKResult<std::string> result = std::string("value");
    ASSERT_TRUE(result);
    EXPECT_EQ(*result, "value");
    EXPECT_EQ(result->size(), 5u);
    result->push_back('s');
    EXPECT_EQ(std::move(result).valueOrNothing(), "values");
    ZPKResult<std::string> failed = ZPKFailure("/a", "Why");
    ASSERT_FALSE(failed);
    EXPECT_EQ(failed.failure().message(), "/a: Why");
    EXPECT_EQ(std::move(failed).valueOrNothing(), std::nullopt);
}

TEST(ZPKResultTest, HoldsWhatCanOnlyBeMoved) {
    ZPKResult<std::unique_ptr<int>> result = std::make_unique<int>(7);
    ASSERT_TRUE(result);
    const std::unique_ptr<int> taken = std::move(*result);
    EXPECT_EQ(*taken, 7);
}

TEST(ZPKResultDeathTest, WrongHalfIsAProgrammingError) {
    const ZPKResult<int> value = 1;
    EXPECT_DEATH(static_cast<void>(value.failure()), "m_failure");
    const ZPKResult<int> failed = ZPKFailure("/a", "Why");
    EXPECT_DEATH(static_cast<void>(*failed), "m_value");
}

}  // namespace
