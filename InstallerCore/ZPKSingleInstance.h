// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

/// The rule that one launcher of a name runs at a time. Main thread only.
class ZPKSingleInstance {
public:
    ZPKSingleInstance() = delete;

    /// True when another running application carries the name of this one: the `CFBundleName` of its
    /// top-level strings file, else the last part of its identifier.
    static bool isOtherRunning();
};
