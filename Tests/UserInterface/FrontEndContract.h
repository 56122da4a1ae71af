// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <atomic>
#include <memory>
#include <ostream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "Tests/UserInterface/ScriptedDelegate.h"
#include "UserInterface/ZPKFrontEnd.h"

// What the launch sequence relies on with any front end. The program that includes this instantiates
// the suite with what makes its front end.

namespace zpk_test {

using Messages = std::vector<std::string>;

/// A front end to test, by its name.
struct FrontEndKind {
    const char* name;
    std::unique_ptr<ZPKFrontEnd> (*make)();
};

inline void PrintTo(const FrontEndKind& kind, std::ostream* out) {
    *out << kind.name;
}

inline void waitFor(const std::atomic<bool>& condition) {
    while (!condition) {
        std::this_thread::yield();
    }
}

/// How often the thread has given the processor away by itself.
inline long waitsOfThisThread() {
    rusage usage{};
    EXPECT_EQ(::getrusage(RUSAGE_THREAD, &usage), 0);
    return usage.ru_nvcsw;
}

class FrontEndContract : public ::testing::TestWithParam<FrontEndKind> {
protected:
    std::unique_ptr<ZPKFrontEnd> frontEnd = GetParam().make();
    ScriptedDelegate delegate;
};

TEST_P(FrontEndContract, SendsTheThreeMessagesInOrder) {
    delegate.onDidFinish = [&] { frontEnd->terminate(); };
    EXPECT_EQ(frontEnd->run(delegate), 0);
    EXPECT_EQ(delegate.messages, (Messages{"awakeFromNib", "willFinishLaunching", "didFinishLaunching"}));
}

TEST_P(FrontEndContract, SendsNothingAfterTerminateInAwakeFromNib) {
    delegate.onAwake = [&] { frontEnd->terminate(); };
    EXPECT_EQ(frontEnd->run(delegate), 0);
    EXPECT_EQ(delegate.messages, Messages{"awakeFromNib"});
}

TEST_P(FrontEndContract, SendsNothingAfterTerminateInWillFinishLaunching) {
    delegate.onWillFinish = [&] { frontEnd->terminate(); };
    EXPECT_EQ(frontEnd->run(delegate), 0);
    EXPECT_EQ(delegate.messages, (Messages{"awakeFromNib", "willFinishLaunching"}));
}

TEST_P(FrontEndContract, RunsOnUntilTerminateComesFromLater) {
    std::thread worker;
    delegate.onDidFinish = [&] {
        // No loop runs yet: only the run's own can take this.
        worker = std::thread([&] { frontEnd->performOnMainThreadAndWait([&] { frontEnd->terminate(); }); });
    };
    EXPECT_EQ(frontEnd->run(delegate), 0);
    worker.join();
}

TEST_P(FrontEndContract, LetsAnExceptionOfAMessageThrough) {
    delegate.onDidFinish = [] { throw std::runtime_error("no folder"); };
    EXPECT_THROW(frontEnd->run(delegate), std::runtime_error);
}

TEST_P(FrontEndContract, AbortBeforeTheLoopEndsTheNextLoopOnly) {
    std::thread worker;
    runWith(*frontEnd, [&] {
        auto window = frontEnd->createProgressWindow();
        frontEnd->abortModal();
        EXPECT_EQ(frontEnd->runModalForWindow(*window), ZPKModalResponseAbort);
        std::atomic<bool> hasRun = false;
        worker = std::thread([&] {
            frontEnd->performOnMainThreadAndWait([&] { hasRun = true; });
            frontEnd->performOnMainThreadAndWait([&] { frontEnd->stopModal(7); });
        });
        EXPECT_EQ(frontEnd->runModalForWindow(*window), 7);
        EXPECT_TRUE(hasRun);
    });
    worker.join();
}

TEST_P(FrontEndContract, AbortFromAWorkerBeforeTheLoopIsNotLost) {
    runWith(*frontEnd, [&] {
        auto window = frontEnd->createProgressWindow();
        std::thread([&] { frontEnd->abortModal(); }).join();
        EXPECT_EQ(frontEnd->runModalForWindow(*window), ZPKModalResponseAbort);
    });
}

TEST_P(FrontEndContract, AbortThatASessionReceivesEndsTheNextLoopOnly) {
    std::thread worker;
    runWith(*frontEnd, [&] {
        auto window = frontEnd->createProgressWindow();
        frontEnd->abortModal();
        {
            auto session = frontEnd->beginModalSessionForWindow(*window);
            session->run();
        }
        EXPECT_EQ(frontEnd->runModalForWindow(*window), ZPKModalResponseAbort);
        worker = std::thread([&] { frontEnd->performOnMainThreadAndWait([&] { frontEnd->stopModal(7); }); });
        EXPECT_EQ(frontEnd->runModalForWindow(*window), 7);
    });
    worker.join();
}

TEST_P(FrontEndContract, StopWithoutALoopIsForgotten) {
    runWith(*frontEnd, [&] {
        auto window = frontEnd->createProgressWindow();
        frontEnd->stopModal(5);
        frontEnd->abortModal();
        EXPECT_EQ(frontEnd->runModalForWindow(*window), ZPKModalResponseAbort);
    });
}

TEST_P(FrontEndContract, StopEndsTheInnermostLoop) {
    std::thread worker;
    runWith(*frontEnd, [&] {
        auto outer = frontEnd->createProgressWindow();
        auto inner = frontEnd->createProgressWindow();
        worker = std::thread([&] {
            frontEnd->performOnMainThreadAndWait([&] {
                std::thread([&] {
                    frontEnd->performOnMainThreadAndWait([&] { frontEnd->stopModal(1); });
                }).detach();
                EXPECT_EQ(frontEnd->runModalForWindow(*inner), 1);
                frontEnd->stopModal(2);
                frontEnd->stopModal(3);
            });
        });
        EXPECT_EQ(frontEnd->runModalForWindow(*outer), 2);
    });
    worker.join();
}

TEST_P(FrontEndContract, TerminateEndsTheLoopsAndThoseThatCome) {
    std::thread worker;
    runWith(*frontEnd, [&] {
        auto window = frontEnd->createProgressWindow();
        worker = std::thread([&] { frontEnd->performOnMainThreadAndWait([&] { frontEnd->terminate(); }); });
        EXPECT_EQ(frontEnd->runModalForWindow(*window), ZPKModalResponseAbort);
        EXPECT_EQ(frontEnd->runModalForWindow(*window), ZPKModalResponseAbort);
    });
    worker.join();
}

TEST_P(FrontEndContract, PerformFromTheMainThreadRunsDirectly) {
    bool hasRun = false;
    frontEnd->performOnMainThreadAndWait([&] { hasRun = true; });
    EXPECT_TRUE(hasRun);
}

TEST_P(FrontEndContract, PerformRunsOnTheMainThreadAndWaits) {
    const std::thread::id mainThread = std::this_thread::get_id();
    std::thread worker;
    runWith(*frontEnd, [&] {
        auto window = frontEnd->createProgressWindow();
        worker = std::thread([&] {
            std::thread::id seen;
            frontEnd->performOnMainThreadAndWait([&] { seen = std::this_thread::get_id(); });
            EXPECT_EQ(seen, mainThread);
            frontEnd->abortModal();
        });
        frontEnd->runModalForWindow(*window);
    });
    worker.join();
}

TEST_P(FrontEndContract, AThousandPerformsAllRunInOrder) {
    std::vector<int> seen;
    std::thread worker;
    runWith(*frontEnd, [&] {
        auto window = frontEnd->createProgressWindow();
        worker = std::thread([&] {
            for (int at = 0; at < 1000; ++at) {
                frontEnd->performOnMainThreadAndWait([&seen, at] { seen.push_back(at); });
            }
            frontEnd->abortModal();
        });
        frontEnd->runModalForWindow(*window);
    });
    worker.join();
    ASSERT_EQ(seen.size(), 1000U);
    for (int at = 0; at < 1000; ++at) {
        EXPECT_EQ(seen[static_cast<std::size_t>(at)], at);
    }
}

TEST_P(FrontEndContract, AbortWhileAPerformWaitsEndsTheLoopAndStrandsNobody) {
    std::thread performer;
    std::thread aborter;
    runWith(*frontEnd, [&] {
        auto window = frontEnd->createProgressWindow();
        std::atomic<bool> hasStarted = false;
        std::atomic<bool> hasAborted = false;
        performer = std::thread([&] {
            frontEnd->performOnMainThreadAndWait([&] {
                hasStarted = true;
                waitFor(hasAborted);
            });
            frontEnd->performOnMainThreadAndWait([] {});
        });
        aborter = std::thread([&] {
            waitFor(hasStarted);
            frontEnd->abortModal();
            hasAborted = true;
        });
        EXPECT_EQ(frontEnd->runModalForWindow(*window), ZPKModalResponseAbort);
    });
    performer.join();
    aborter.join();
}

TEST_P(FrontEndContract, PerformThatWaitsWhenTheRunEndsIsLeftOut) {
    std::atomic<bool> hasRun = false;
    std::atomic<bool> hasAsked = false;
    std::thread worker;
    runWith(*frontEnd, [&] {
        worker = std::thread([&] {
            hasAsked = true;
            frontEnd->performOnMainThreadAndWait([&] { hasRun = true; });
        });
        waitFor(hasAsked);
        // Usually it waits by now; where it comes later it is left out all the same.
        for (int turn = 0; turn < 1000; ++turn) {
            std::this_thread::yield();
        }
    });
    worker.join();
    EXPECT_FALSE(hasRun);
    frontEnd->abortModal();
}

TEST_P(FrontEndContract, ClosingLetsTheThreadsGoThatWaitAndThoseThatCome) {
    bool hasRun = false;
    runWith(*frontEnd, [&] {
        std::atomic<bool> hasAsked = false;
        std::thread worker([&] {
            hasAsked = true;
            frontEnd->performOnMainThreadAndWait([&] { hasRun = true; });
            frontEnd->performOnMainThreadAndWait([&] { hasRun = true; });
            frontEnd->abortModal();
        });
        while (!hasAsked) {
            std::this_thread::yield();
        }
        frontEnd->closeToOtherThreads();
        worker.join();
    });
    EXPECT_FALSE(hasRun);
}

TEST_P(FrontEndContract, ClosingFromInsideAnActionLetsItsThreadGo) {
    runWith(*frontEnd, [&] {
        auto window = frontEnd->createProgressWindow();
        std::thread worker;
        worker = std::thread([&] {
            frontEnd->performOnMainThreadAndWait([&] {
                frontEnd->closeToOtherThreads();
                worker.join();
                frontEnd->stopModal(4);
            });
        });
        EXPECT_EQ(frontEnd->runModalForWindow(*window), 4);
    });
}

TEST_P(FrontEndContract, SessionHandlesPerformsAndTurnsOnWithoutThem) {
    std::thread worker;
    runWith(*frontEnd, [&] {
        auto window = frontEnd->createProgressWindow();
        window->progressIndicator().setIndeterminate(true);
        window->progressIndicator().startAnimation();
        window->makeKeyAndOrderFront();
        std::atomic<bool> isSearching = true;
        std::atomic<bool> hasTurned = false;
        int performed = 0;
        worker = std::thread([&] {
            frontEnd->performOnMainThreadAndWait([&] { ++performed; });
            // A session that waits for an event without an end never turns again.
            waitFor(hasTurned);
            isSearching = false;
        });
        auto session = frontEnd->beginModalSessionForWindow(*window);
        for (int turn = 0; isSearching; ++turn) {
            session->run();
            hasTurned = performed == 1 && turn >= 3;
        }
        session.reset();
        window->close();
        EXPECT_EQ(performed, 1);
    });
    worker.join();
}

TEST_P(FrontEndContract, SessionTellsWhenTheLoopAroundItIsToEnd) {
    std::thread worker;
    runWith(*frontEnd, [&] {
        auto outer = frontEnd->createProgressWindow();
        auto inner = frontEnd->createProgressWindow();
        worker = std::thread([&] {
            frontEnd->performOnMainThreadAndWait([&] {
                auto session = frontEnd->beginModalSessionForWindow(*inner);
                EXPECT_TRUE(session->run());
                frontEnd->abortModal();
                while (session->run()) {
                }
                EXPECT_FALSE(session->run());
                frontEnd->stopModal(5);
            });
        });
        EXPECT_EQ(frontEnd->runModalForWindow(*outer), ZPKModalResponseAbort);
        auto session = frontEnd->beginModalSessionForWindow(*inner);
        EXPECT_TRUE(session->run());
        frontEnd->terminate();
        EXPECT_FALSE(session->run());
    });
    worker.join();
}

TEST_P(FrontEndContract, SessionWaitsALittleWhenNothingHappens) {
    runWith(*frontEnd, [&] {
        auto window = frontEnd->createProgressWindow();
        auto session = frontEnd->beginModalSessionForWindow(*window);
        const long before = waitsOfThisThread();
        int turns = 0;
        while (turns < 1000 && waitsOfThisThread() < before + 10) {
            session->run();
            ++turns;
        }
        EXPECT_LT(turns, 1000) << "the session must not spin";
    });
}

}  // namespace zpk_test
