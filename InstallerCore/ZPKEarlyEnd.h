// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <atomic>

/// Whether somebody, by a signal, has asked for the run to end before its time. Any thread.
class ZPKEarlyEnd {
public:
    /// False, and the question is lost, while the setup program runs: the run waits for that one's end.
    bool ask(int signal) {
        int state = kNobodyAsked;
        return m_state.compare_exchange_strong(state, signal) || state > 0;
    }

    /// The number of the signal that asked first, or 0.
    int signal() const {
        const int state = m_state;
        return state > 0 ? state : 0;
    }

    bool isAsked() const { return signal() != 0; }

    /// True when nobody has asked: the setup program may begin, and nobody can ask until `endSetup`.
    bool beginSetup() {
        int state = kNobodyAsked;
        return m_state.compare_exchange_strong(state, kSetupRuns);
    }
    void endSetup() { m_state = kNobodyAsked; }

private:
    static constexpr int kNobodyAsked = 0;
    static constexpr int kSetupRuns = -1;

    /// One of the above, or the signal's number.
    std::atomic<int> m_state{kNobodyAsked};
};
