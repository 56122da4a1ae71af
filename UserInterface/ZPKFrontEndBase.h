// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <functional>

#include "UserInterface/ZPKFrontEnd.h"
#include "UserInterface/ZPKMainThreadQueue.h"
#include "UserInterface/ZPKModalLoopStack.h"

/// What the front ends have in common: the order of the application's life, the modal loops and the
/// actions for the main thread. The thread that makes it is the main thread.
class ZPKFrontEndBase : public ZPKFrontEnd {
public:
    int run(ZPKApplicationDelegate& delegate) final;
    void terminate() override;
    int runModalForWindow(ZPKWindow& window) final;
    void stopModal(int code) final;
    void abortModal() override;
    void performOnMainThreadAndWait(const std::function<void()>& action) final;
    void closeToOtherThreads() final;

protected:
    /// `wake` is called on any thread and must make the main thread's loop call `runPendingActions`.
    explicit ZPKFrontEndBase(std::function<void()> wake);

    /// Prepares for the delegate's messages; false, after a line on standard error, when that fails.
    virtual bool prepare() { return true; }

    /// Shows `window` and handles events until `loop` is stopped, which it may be from the start.
    virtual void runLoopForWindow(ZPKWindow& window, ZPKModalLoop& loop) = 0;

    /// Handles events until `loop` is stopped.
    virtual void runLoop(ZPKModalLoop& loop) = 0;

    void runPendingActions() { m_queue.runPending(); }

    /// True when the owner of a session inside the modal loop that runs must come to an end.
    bool isLoopStopped() const { return m_loops.isStopping(); }

    /// Makes `run` give exit status 1.
    void noteFailure() { m_exitStatus = 1; }

private:
    void sendMessages(ZPKApplicationDelegate& delegate);

    ZPKMainThreadQueue m_queue;
    ZPKModalLoopStack m_loops;
    int m_exitStatus = 0;
};
