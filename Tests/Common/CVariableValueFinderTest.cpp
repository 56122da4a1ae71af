// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Common/CVariableValueFinder.h"

#include <gtest/gtest.h>

#include <memory>
#include <type_traits>

#include "Tests/Common/MapFinder.h"
#include "Tests/Support/VirtualSlot.h"

using varno_zpk::CVariableValueFinder;
using varno_zpk::IVariableValueFinder;
using zpk_test::MapFinder;

TEST(VariableValueFinderInterfaceTest, FindValueFollowsTheTwoDestructors) {
    EXPECT_EQ(zpk_test::virtualSlot(&IVariableValueFinder::FindValue), 3u);
    EXPECT_TRUE(std::has_virtual_destructor_v<IVariableValueFinder>);
    EXPECT_EQ(sizeof(IVariableValueFinder), sizeof(void*));
}

TEST(VariableValueFinderTest, IsStillAbstract) {
    EXPECT_TRUE(std::is_abstract_v<CVariableValueFinder>);
    EXPECT_TRUE((std::is_convertible_v<CVariableValueFinder*, IVariableValueFinder*>));
}

TEST(VariableValueFinderTest, NoDefaultFinderAtStart) {
    EXPECT_EQ(CVariableValueFinder::GetDefaultFinder(), nullptr);
}

TEST(VariableValueFinderTest, LastRegisteredFinderIsTheDefault) {
    MapFinder first{};
    MapFinder second{};
    CVariableValueFinder::SetDefaultFinder(&first);
    CVariableValueFinder::SetDefaultFinder(&second);
    EXPECT_EQ(CVariableValueFinder::GetDefaultFinder(), &second);
    CVariableValueFinder::SetDefaultFinder(nullptr);
    EXPECT_EQ(CVariableValueFinder::GetDefaultFinder(), nullptr);
}

TEST(VariableValueFinderTest, DestroyedDefaultFinderTakesItselfBack) {
    {
        MapFinder finder{};
        CVariableValueFinder::SetDefaultFinder(&finder);
    }
    EXPECT_EQ(CVariableValueFinder::GetDefaultFinder(), nullptr);
}

TEST(VariableValueFinderTest, DestroyedOtherFinderLeavesTheDefault) {
    MapFinder kept{};
    CVariableValueFinder::SetDefaultFinder(&kept);
    { MapFinder other{}; }
    EXPECT_EQ(CVariableValueFinder::GetDefaultFinder(), &kept);
}
