// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Common/CBaseObjectUtil.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <stdexcept>
#include <string>
#include <type_traits>

#include "Tests/Common/AssertionReport.h"

using varno_zpk::CBaseObject;
using varno_zpk::CBaseObjectUtil;

namespace {

/// Appends its name to a text when it is destroyed.
class Recorded : public CBaseObject {
public:
    Recorded(char name, std::string& record) : m_name(name), m_record(record) {}
    ~Recorded() override { m_record += m_name; }

private:
    char m_name;
    std::string& m_record;
};

class Throwing : public CBaseObject {
public:
    ~Throwing() noexcept(false) override { throw std::runtime_error("destructor"); }
};

class Announced : public CBaseObject {
public:
    ~Announced() override { std::fputs("destroyed\n", stderr); }
};

}  // namespace

TEST(BaseObjectTest, HasNothingButAVirtualDestructor) {
    EXPECT_TRUE(std::has_virtual_destructor_v<CBaseObject>);
    EXPECT_EQ(sizeof(CBaseObject), sizeof(void*));
}

TEST(BaseObjectUtilTest, DestroyDeletesLastFirstAndEmptiesTheVector) {
    std::string record;
    std::vector<CBaseObject*> objects{new Recorded('A', record), new Recorded('B', record),
                                      new Recorded('C', record)};
    CBaseObjectUtil::Destroy(objects);
    EXPECT_EQ(record, "CBA");
    EXPECT_TRUE(objects.empty());
}

TEST(BaseObjectUtilTest, DestroySkipsNullEntries) {
    std::string record;
    std::vector<CBaseObject*> objects{nullptr, new Recorded('A', record), nullptr, new Recorded('B', record),
                                      nullptr};
    CBaseObjectUtil::Destroy(objects);
    EXPECT_EQ(record, "BA");
    EXPECT_TRUE(objects.empty());
}

TEST(BaseObjectUtilTest, DestroyKeepsTheCapacity) {
    std::vector<CBaseObject*> objects;
    objects.reserve(100);
    const std::size_t capacity = objects.capacity();
    objects.push_back(new CBaseObject);
    CBaseObjectUtil::Destroy(objects);
    EXPECT_EQ(objects.capacity(), capacity);
}

TEST(BaseObjectUtilTest, DestroyLeavesAnEmptyVectorEmpty) {
    std::vector<CBaseObject*> objects;
    CBaseObjectUtil::Destroy(objects);
    EXPECT_TRUE(objects.empty());
}

TEST(BaseObjectUtilTest, DestroyAbortsAtTheFirstDestructorThatThrows) {
    EXPECT_DEATH(
        {
            std::vector<CBaseObject*> objects;
            objects.push_back(new Announced);
            objects.push_back(new Throwing);
            objects.push_back(new Announced);
            CBaseObjectUtil::Destroy(objects);
        },
        testing::MatchesRegex(
            "destroyed\n" +
            zpk_test::assertionReport(
                "Common/CBaseObjectUtil.cpp",
                "static void varno_zpk::CBaseObjectUtil::Destroy(std::vector<varno_zpk::CBaseObject*>&)",
                "0")));
}

TEST(BaseObjectUtilTest, RemoveObjectClosesTheGapAndDoesNotDelete) {
    std::string record;
    Recorded a('A', record);
    Recorded b('B', record);
    Recorded c('C', record);
    std::vector<CBaseObject*> objects{&a, &b, &c};
    EXPECT_TRUE(CBaseObjectUtil::RemoveObject(objects, &b));
    EXPECT_EQ(objects, (std::vector<CBaseObject*>{&a, &c}));
    EXPECT_EQ(record, "");
}

TEST(BaseObjectUtilTest, RemoveObjectTakesOnlyTheFirstOccurrence) {
    CBaseObject a;
    CBaseObject b;
    CBaseObject c;
    std::vector<CBaseObject*> objects{&a, &b, &c, &b};
    EXPECT_TRUE(CBaseObjectUtil::RemoveObject(objects, &b));
    EXPECT_EQ(objects, (std::vector<CBaseObject*>{&a, &c, &b}));
}

TEST(BaseObjectUtilTest, RemoveObjectLeavesTheVectorWhenTheObjectIsAbsent) {
    CBaseObject a;
    CBaseObject b;
    std::vector<CBaseObject*> objects{&a, nullptr};
    EXPECT_FALSE(CBaseObjectUtil::RemoveObject(objects, &b));
    EXPECT_EQ(objects, (std::vector<CBaseObject*>{&a, nullptr}));
}

TEST(BaseObjectUtilTest, RemoveObjectFindsANullEntry) {
    CBaseObject a;
    std::vector<CBaseObject*> objects{&a, nullptr};
    EXPECT_TRUE(CBaseObjectUtil::RemoveObject(objects, nullptr));
    EXPECT_EQ(objects, (std::vector<CBaseObject*>{&a}));
}
