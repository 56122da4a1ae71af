// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Common/CAutoFinalizeObject.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <type_traits>

#include "Common/CPlusUtil.h"
#include "Tests/Common/AssertionReport.h"
#include "Tests/Support/VirtualSlot.h"

// Finalization is final for a process, so every test of it runs in a child and looks at what the
// child wrote on standard error.
namespace varno_zpk {

class AutoFinalizeObjectTest : public testing::Test {
protected:
    static const std::vector<CBaseObject*>& registered() {
        return CAutoFinalizeObject::s_AutoFinalizeObjects;
    }

    static bool allFinalized() { return CAutoFinalizeObject::s_AllObjectsFinalized; }

    [[noreturn]] static void finalizeAndExit() {
        CAutoFinalizeObject::FinalizeAllObjects();
        std::fprintf(stderr, "registered %zu\n", registered().size());
        std::exit(0);
    }

    /// Writes what happens to it.
    class Singleton : public CAutoFinalizeObject {
    public:
        explicit Singleton(const std::string& name) : m_name(name) {}
        ~Singleton() override {
            std::fprintf(stderr, "destroy %s of %zu\n", m_name.c_str(), registered().size());
        }
        void AutoFinalizeObjectFinalize() override { std::fprintf(stderr, "finalize %s\n", m_name.c_str()); }

    private:
        std::string m_name;
    };

    class ThrowsException : public Singleton {
    public:
        using Singleton::Singleton;
        void AutoFinalizeObjectFinalize() override {
            Singleton::AutoFinalizeObjectFinalize();
            throw std::runtime_error("finalizer");
        }
    };

    class ThrowsNumber : public Singleton {
    public:
        using Singleton::Singleton;
        void AutoFinalizeObjectFinalize() override {
            Singleton::AutoFinalizeObjectFinalize();
            throw 1;
        }
    };

    class ThrowsWhenDestroyed : public CAutoFinalizeObject {
    public:
        ~ThrowsWhenDestroyed() noexcept(false) override { throw std::runtime_error("destructor"); }
    };

    class MakesSingleton : public CAutoFinalizeObject {
    public:
        void AutoFinalizeObjectFinalize() override { new Singleton("late"); }
    };

    class UsesAnother : public CAutoFinalizeObject {
    public:
        explicit UsesAnother(Singleton* other) : m_other(other) {}
        void AutoFinalizeObjectFinalize() override {
            std::fprintf(stderr, "used: ");
            m_other->AutoFinalizeObjectFinalize();
        }

    private:
        Singleton* m_other;
    };
};

TEST_F(AutoFinalizeObjectTest, HookFollowsTheTwoDestructors) {
    EXPECT_EQ(zpk_test::virtualSlot(&CAutoFinalizeObject::AutoFinalizeObjectFinalize), 3u);
    EXPECT_TRUE(std::has_virtual_destructor_v<CAutoFinalizeObject>);
    EXPECT_EQ(sizeof(CAutoFinalizeObject), sizeof(void*));
}

TEST_F(AutoFinalizeObjectTest, StartsEmptyAndNotFinalized) {
    EXPECT_TRUE(registered().empty());
    EXPECT_FALSE(allFinalized());
}

TEST_F(AutoFinalizeObjectTest, RegistersInOrderOfConstructionAndUnregistersOnDestruction) {
    CAutoFinalizeObject a;
    {
        CAutoFinalizeObject b;
        CAutoFinalizeObject c;
        EXPECT_EQ(registered(), (std::vector<CBaseObject*>{&a, &b, &c}));
    }
    CAutoFinalizeObject d;
    EXPECT_EQ(registered(), (std::vector<CBaseObject*>{&a, &d}));
}

TEST_F(AutoFinalizeObjectTest, DefaultHookDoesNothing) {
    CAutoFinalizeObject object;
    object.AutoFinalizeObjectFinalize();
    EXPECT_EQ(registered(), (std::vector<CBaseObject*>{&object}));
}

TEST_F(AutoFinalizeObjectTest, FinalizesFirstCreatedFirstThenDestroysLastCreatedFirst) {
    EXPECT_EXIT(
        {
            new Singleton("A");
            new Singleton("B");
            new Singleton("C");
            finalizeAndExit();
        },
        testing::ExitedWithCode(0),
        testing::Eq("finalize A\nfinalize B\nfinalize C\n"
                    "destroy C of 3\ndestroy B of 2\ndestroy A of 1\nregistered 0\n"));
}

TEST_F(AutoFinalizeObjectTest, NothingRegisteredIsNothingToFinalize) {
    EXPECT_EXIT(finalizeAndExit(), testing::ExitedWithCode(0), testing::Eq("registered 0\n"));
}

TEST_F(AutoFinalizeObjectTest, DestroyedObjectIsNotFinalized) {
    EXPECT_EXIT(
        {
            new Singleton("A");
            const auto* b = new Singleton("B");
            new Singleton("C");
            delete b;
            finalizeAndExit();
        },
        testing::ExitedWithCode(0),
        testing::Eq(
            "destroy B of 3\nfinalize A\nfinalize C\ndestroy C of 2\ndestroy A of 1\nregistered 0\n"));
}

TEST_F(AutoFinalizeObjectTest, ThrowingFinalizerStopsNeitherTheOthersNorTheDestruction) {
    EXPECT_EXIT(
        {
            new ThrowsException("A");  // NOLINT(bugprone-throw-keyword-missing): it is no exception
            new ThrowsNumber("B");
            new Singleton("C");
            finalizeAndExit();
        },
        testing::ExitedWithCode(0),
        testing::Eq("finalize A\nfinalize B\nfinalize C\n"
                    "destroy C of 3\ndestroy B of 2\ndestroy A of 1\nregistered 0\n"));
}

TEST_F(AutoFinalizeObjectTest, FinalizerMayUseSingletonsFinalizedBeforeIt) {
    EXPECT_EXIT(
        {
            auto* a = new Singleton("A");
            new UsesAnother(a);
            finalizeAndExit();
        },
        testing::ExitedWithCode(0),
        testing::Eq("finalize A\nused: finalize A\ndestroy A of 1\nregistered 0\n"));
}

TEST_F(AutoFinalizeObjectTest, ThrowingDestructorAborts) {
    EXPECT_DEATH(
        {
            new ThrowsWhenDestroyed;
            finalizeAndExit();
        },
        testing::MatchesRegex(zpk_test::assertionReport(
            "Common/CBaseObjectUtil.cpp",
            "static void varno_zpk::CBaseObjectUtil::Destroy(std::vector<varno_zpk::CBaseObject*>&)", "0")));
}

TEST_F(AutoFinalizeObjectTest, SecondFinalizationAborts) {
    EXPECT_DEATH(
        {
            CAutoFinalizeObject::FinalizeAllObjects();
            CAutoFinalizeObject::FinalizeAllObjects();
        },
        testing::MatchesRegex(zpk_test::assertionReport(
            "Common/CAutoFinalizeObject.cpp",
            "static void varno_zpk::CAutoFinalizeObject::FinalizeAllObjects()", "!s_AllObjectsFinalized")));
}

TEST_F(AutoFinalizeObjectTest, ConstructionAfterFinalizationAborts) {
    EXPECT_DEATH(
        {
            CAutoFinalizeObject::FinalizeAllObjects();
            CAutoFinalizeObject late;
        },
        testing::MatchesRegex(zpk_test::assertionReport(
            "Common/CAutoFinalizeObject.cpp", "varno_zpk::CAutoFinalizeObject::CAutoFinalizeObject()",
            "!s_AllObjectsFinalized")));
}

TEST_F(AutoFinalizeObjectTest, ConstructionInAFinalizerAborts) {
    EXPECT_DEATH(
        {
            new MakesSingleton;
            CAutoFinalizeObject::FinalizeAllObjects();
        },
        testing::MatchesRegex(zpk_test::assertionReport(
            "Common/CAutoFinalizeObject.cpp", "varno_zpk::CAutoFinalizeObject::CAutoFinalizeObject()",
            "!s_AllObjectsFinalized")));
}

TEST_F(AutoFinalizeObjectTest, TakesObjectsBackWithTheCheckedDownCast) {
    EXPECT_EXIT(
        {
            new CAutoFinalizeObject;
            CAutoFinalizeObject::FinalizeAllObjects();
            std::fprintf(stderr, "%s:%u\n", g_CPlusUtil_File, g_CPlusUtil_Line);
            std::exit(0);
        },
        testing::ExitedWithCode(0), testing::MatchesRegex("Common/CAutoFinalizeObject\\.cpp:[1-9][0-9]*\n"));
}

TEST_F(AutoFinalizeObjectTest, ProcessEndLeavesTheObjectsAlone) {
    EXPECT_EXIT(
        {
            static Singleton* kept = new Singleton("A");
            std::exit(kept != nullptr ? 0 : 1);
        },
        testing::ExitedWithCode(0), testing::Eq(""));
}

}  // namespace varno_zpk
