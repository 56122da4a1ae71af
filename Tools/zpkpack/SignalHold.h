// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <signal.h>

#include "Base/ZPKFileDescriptor.h"

namespace zpk_packager {

/// Keeps the signals that ask a program to end (SIGINT, SIGTERM, SIGHUP) waiting while it is there,
/// so that cleaning up comes first; afterwards they do what they always do. Signals that the process
/// ignores stay ignored. Made while the process has one thread.
class SignalHold {
public:
    /// Throws `PackagerFailure`.
    SignalHold();
    ~SignalHold();
    SignalHold(const SignalHold&) = delete;
    SignalHold& operator=(const SignalHold&) = delete;

    /// Becomes readable when a signal waits. Nobody may read from it: the signal is to stay.
    int descriptor() const { return m_descriptor.get(); }

private:
    sigset_t m_before;
    ZPKFileDescriptor m_descriptor;
};

}  // namespace zpk_packager
