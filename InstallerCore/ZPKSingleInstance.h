// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <functional>

#include "Platform/ZPKNamedLock.h"

class ZPKClock;

/// The rule that one launcher of a name runs at a time. Main thread only.
///
/// Launchers that begin in the same moment all see each other. A lock tells them apart: who has it lets the
/// others end, who has it not ends. Nothing else hangs on it: without a lock the launcher that sees nobody
/// goes on all the same, and one that sees another does not.
class ZPKSingleInstance {
public:
    /// What is asked between two looks: true when nobody waits for the answer any more.
    using IsAskedToEnd = std::function<bool()>;

    /// True when another running application carries the name of this one: the `CFBundleName` of its
    /// top-level strings file, else the last part of its identifier. Where this process comes to hold the
    /// lock of that name, which it keeps as long as this object, waits for those that end on that account, as
    /// long as they keep ending, and then for two seconds.
    bool isOtherRunning(ZPKClock& clock, const IsAskedToEnd& isAskedToEnd);

private:
    ZPKNamedLock m_lock;
};
