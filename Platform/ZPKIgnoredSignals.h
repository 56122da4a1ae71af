// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <csignal>

/// The signals that this program ignores on its own account. Child processes get those back; what was ignored
/// already when the program began is the person's wish, and stays ignored everywhere.
class ZPKIgnoredSignals {
public:
    ZPKIgnoredSignals() = delete;

    /// Makes a write that cannot be done the error of a call instead of the process's end: to a reader that
    /// has gone (SIGPIPE), and beyond the limit of file sizes (SIGXFSZ). Before other threads begin.
    static void ignoreThoseOfWrites();

    /// What this program has begun to ignore. Any thread.
    static sigset_t own();
};
