// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Base/ZPKFileDescriptor.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <cerrno>

namespace {

bool isOpenNow(int descriptor) {
    return ::fcntl(descriptor, F_GETFD) >= 0;
}

int openNull() {
    return ::open("/dev/null", O_RDWR | O_CLOEXEC);
}

TEST(ZPKFileDescriptorTest, OwnsNothingAtFirst) {
    ZPKFileDescriptor none;
    EXPECT_FALSE(none.isOpen());
    EXPECT_EQ(none.get(), -1);
    EXPECT_TRUE(none.close()) << "nothing to lose";
    EXPECT_FALSE(ZPKFileDescriptor(::open("/missing", O_RDONLY)).isOpen());
}

TEST(ZPKFileDescriptorTest, ClosesAtTheEndOfItsScope) {
    int number = -1;
    {
        const ZPKFileDescriptor descriptor(openNull());
        number = descriptor.get();
        EXPECT_TRUE(descriptor.isOpen());
        EXPECT_TRUE(isOpenNow(number));
    }
    EXPECT_FALSE(isOpenNow(number));
}

TEST(ZPKFileDescriptorTest, ClosesOnceOnly) {
    ZPKFileDescriptor descriptor(openNull());
    const int number = descriptor.get();
    EXPECT_TRUE(descriptor.close());
    EXPECT_FALSE(descriptor.isOpen());
    // The number now belongs to somebody else.
    ASSERT_EQ(openNull(), number);
    EXPECT_TRUE(descriptor.close());
    { const ZPKFileDescriptor gone = std::move(descriptor); }
    EXPECT_TRUE(isOpenNow(number));
    ::close(number);
}

TEST(ZPKFileDescriptorTest, MovesWithoutClosing) {
    ZPKFileDescriptor first(openNull());
    const int number = first.get();
    ZPKFileDescriptor second(std::move(first));
    EXPECT_EQ(second.get(), number);
    EXPECT_FALSE(first.isOpen());  // NOLINT(bugprone-use-after-move): what a move leaves is the question
    ZPKFileDescriptor third;
    third = std::move(second);
    EXPECT_EQ(third.get(), number);
    EXPECT_TRUE(isOpenNow(number));
}

TEST(ZPKFileDescriptorTest, WhatIsAssignedOverIsClosed) {
    int number = -1;
    ZPKFileDescriptor kept(openNull());
    {
        ZPKFileDescriptor descriptor(openNull());
        number = descriptor.get();
        descriptor = ZPKFileDescriptor(openNull());
        EXPECT_FALSE(isOpenNow(number));
        EXPECT_TRUE(isOpenNow(descriptor.get()));
    }
    EXPECT_TRUE(isOpenNow(kept.get()));
}

TEST(ZPKFileDescriptorTest, ReleasedOneIsTheCallers) {
    int number = -1;
    {
        ZPKFileDescriptor descriptor(openNull());
        number = descriptor.release();
        EXPECT_FALSE(descriptor.isOpen());
    }
    EXPECT_TRUE(isOpenNow(number));
    ::close(number);
}

TEST(ZPKFileDescriptorTest, FailingCloseIsTold) {
    ZPKFileDescriptor descriptor(openNull());
    ::close(descriptor.get());
    EXPECT_FALSE(descriptor.close());
    EXPECT_EQ(errno, EBADF);
    EXPECT_FALSE(descriptor.isOpen()) << "not tried again";
}

}  // namespace
