// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Common/CNonCopyable.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "Common/CAutoFinalizeObject.h"
#include "Common/CNonCopyableObject.h"

using namespace varno_zpk;

namespace {

struct Unrelated : private CNonCopyable {};

template <typename Type>
class NonCopyableTest : public testing::Test {};

using Types = testing::Types<Unrelated, CNonCopyableObject, CAutoFinalizeObject>;
TYPED_TEST_SUITE(NonCopyableTest, Types);

}  // namespace

TYPED_TEST(NonCopyableTest, CanBeMadeButNeitherCopiedNorMoved) {
    EXPECT_TRUE(std::is_default_constructible_v<TypeParam>);
    EXPECT_FALSE(std::is_copy_constructible_v<TypeParam>);
    EXPECT_FALSE(std::is_move_constructible_v<TypeParam>);
    EXPECT_FALSE(std::is_copy_assignable_v<TypeParam>);
    EXPECT_FALSE(std::is_move_assignable_v<TypeParam>);
}

TEST(NonCopyableMixInTest, HasNoVirtualOperationAndNoSize) {
    EXPECT_FALSE(std::is_polymorphic_v<CNonCopyable>);
    EXPECT_TRUE(std::is_empty_v<CNonCopyable>);
}

TEST(NonCopyableObjectTest, IsAnObjectAndHidesTheMixIn) {
    EXPECT_TRUE((std::is_convertible_v<CNonCopyableObject*, CBaseObject*>));
    EXPECT_TRUE((std::is_base_of_v<CNonCopyable, CNonCopyableObject>));
    EXPECT_FALSE((std::is_convertible_v<CNonCopyableObject*, CNonCopyable*>));
    EXPECT_EQ(sizeof(CNonCopyableObject), sizeof(CBaseObject));
    EXPECT_TRUE((std::is_convertible_v<CAutoFinalizeObject*, CNonCopyableObject*>));
}
