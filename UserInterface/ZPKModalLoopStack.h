// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <functional>
#include <utility>
#include <vector>

class ZPKModalLoop;

/// The modal loops that are running, the innermost one last, and the abort that came before its
/// loop. Main thread only.
class ZPKModalLoopStack {
public:
    /// Stops the innermost loop with `code`; nothing when no loop runs or it is stopping already.
    void stop(int code);

    /// Stops the innermost loop with `ZPKModalResponseAbort`; when no loop runs, the next one.
    void abort();

    /// Stops every loop with `ZPKModalResponseAbort`, those that still come too.
    void terminate();

    bool isTerminated() const { return m_terminated; }

    /// True while the innermost loop is on its way out, and for ever after `terminate`.
    bool isStopping() const;

private:
    friend class ZPKModalLoop;

    ZPKModalLoop* innermost() const;

    std::vector<ZPKModalLoop*> m_loops;
    bool m_abortPending = false;
    bool m_terminated = false;
};

/// One loop that is running; it stands in its stack from its making to its end.
class ZPKModalLoop {
public:
    enum class Kind {
        Modal,
        /// The application's own loop: only `ZPKModalLoopStack::terminate` stops it.
        Idle,
    };

    ZPKModalLoop(ZPKModalLoopStack& stack, Kind kind);
    ~ZPKModalLoop();
    ZPKModalLoop(const ZPKModalLoop&) = delete;
    ZPKModalLoop& operator=(const ZPKModalLoop&) = delete;

    bool isStopped() const { return m_stopped; }

    /// `leave` is called once, when the loop is stopped after this.
    void setLeave(std::function<void()> leave) { m_leave = std::move(leave); }

    /// What the loop was stopped with; `ZPKModalResponseAbort` while it runs.
    int code() const { return m_code; }

private:
    friend class ZPKModalLoopStack;

    void stop(int code);

    ZPKModalLoopStack& m_stack;
    const Kind m_kind;
    std::function<void()> m_leave;
    bool m_stopped = false;
    int m_code;
};
