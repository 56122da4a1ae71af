// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Common/CZPKError.h"

#include <gtest/gtest.h>

#include <cstring>
#include <type_traits>

#include "Tests/Support/VirtualSlot.h"

using varno_zpk::CZPKError;
using varno_zpk::CZPKStatus;

namespace {

/// The status that the error refers to: its one field, a reference, after the base class.
const CZPKStatus* statusOf(const CZPKError& error) {
    static_assert(sizeof(CZPKError) == sizeof(std::runtime_error) + sizeof(void*));
    const CZPKStatus* status = nullptr;
    // NOLINTNEXTLINE(bugprone-sizeof-expression): the pointer itself is copied
    std::memcpy(&status, reinterpret_cast<const char*>(&error) + sizeof(std::runtime_error), sizeof(status));
    return status;
}

}  // namespace

TEST(ZPKErrorTest, DefaultIsTheUndefinedError) {
    const CZPKError error;
    EXPECT_EQ(error.GetStatus(), "Undefined Error occurs.");
    EXPECT_EQ(statusOf(error), &CZPKStatus::ERROR_UNDEFINED_BEHAVIOR_HAPPEND);
    EXPECT_STREQ(error.what(), "");
}

TEST(ZPKErrorTest, WhatIsEmptyWhileTheStatusHasItsText) {
    const CZPKError error(CZPKStatus::ERROR_FAILED_LOAD_LANGUAGES);
    EXPECT_STREQ(error.what(), "");
    EXPECT_EQ(error.GetStatus(), "Failed load Languages.xml");
}

TEST(ZPKErrorTest, SameConstantIsTheSameObject) {
    const CZPKError first(CZPKStatus::ERROR_FAILED_LOAD_LANGUAGES);
    const CZPKError second(CZPKStatus::ERROR_FAILED_LOAD_LANGUAGES);
    EXPECT_EQ(statusOf(first), &CZPKStatus::ERROR_FAILED_LOAD_LANGUAGES);
    EXPECT_EQ(statusOf(first), statusOf(second));
}

TEST(ZPKErrorTest, EqualTextOfAnotherStatusIsAnotherObject) {
    const CZPKStatus twin("Failed load Languages.xml");
    const CZPKError error(twin);
    EXPECT_EQ(error.GetStatus(), CZPKStatus::ERROR_FAILED_LOAD_LANGUAGES.GetStatus());
    EXPECT_EQ(statusOf(error), &twin);
    EXPECT_NE(statusOf(error), &CZPKStatus::ERROR_FAILED_LOAD_LANGUAGES);
}

TEST(ZPKErrorTest, RefersToTheStatusInsteadOfCopyingIt) {
    CZPKStatus status("before");
    const CZPKError error(status);
    status = CZPKStatus("after");
    EXPECT_EQ(error.GetStatus(), "after");
}

TEST(ZPKErrorTest, ThrownByValueItIsCaughtAsARuntimeErrorWithItsStatus) {
    try {
        throw CZPKError(CZPKStatus::ERROR_FAILED_EXTRACT);
    } catch (const std::runtime_error& caught) {
        EXPECT_STREQ(caught.what(), "");
        const auto* error = dynamic_cast<const CZPKError*>(&caught);
        ASSERT_NE(error, nullptr);
        EXPECT_EQ(statusOf(*error), &CZPKStatus::ERROR_FAILED_EXTRACT);
    }
}

TEST(ZPKErrorTest, AddsNoVirtualOperation) {
    EXPECT_TRUE(std::has_virtual_destructor_v<CZPKError>);
    EXPECT_EQ(zpk_test::virtualSlot(&CZPKError::what), 3u);
    EXPECT_TRUE((std::is_same_v<decltype(&CZPKError::what), decltype(&std::runtime_error::what)>));
    EXPECT_TRUE((std::is_same_v<decltype(&CZPKError::GetStatus), std::string (CZPKError::*)() const>));
}
