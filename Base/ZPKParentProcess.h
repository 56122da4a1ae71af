// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

/// The process that has started this one as a tool of its own.
class ZPKParentProcess {
public:
    ZPKParentProcess() = delete;

    /// In a tool's environment, the process number of the parent that it is to end with.
    static constexpr const char* kVariable = "ZEPHYRKIT_PARENT";

    /// From now on this process ends when the parent that the environment names does; nothing to do where it
    /// names none. False when that one has ended already. Main thread only.
    static bool endWithIt();
};
