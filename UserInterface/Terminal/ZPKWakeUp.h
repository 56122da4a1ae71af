// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include "Base/ZPKFailure.h"
#include "Base/ZPKFileDescriptor.h"

/// Lets any thread wake the one that waits.
class ZPKWakeUp {
public:
    ZPKWakeUp();
    ZPKWakeUp(const ZPKWakeUp&) = delete;
    ZPKWakeUp& operator=(const ZPKWakeUp&) = delete;

    /// Why nobody can be woken: the host gave no descriptor.
    ZPKOutcome outcome() const { return m_outcome; }

    /// Any thread.
    void wake() const;

    /// Waits for a wake-up, or for input on `descriptor` unless it is negative, at most
    /// `milliseconds`, or without limit when that is negative. True when there is input.
    bool wait(int descriptor, int milliseconds) const;

private:
    const ZPKFileDescriptor m_event;
    ZPKOutcome m_outcome;
};
