// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <functional>

#include "Tools/zpkpack/SignalHold.h"

namespace zpk_packager {

/// A long step of the work in a process of its own: whatever ends it, a signal at any instruction
/// included, the process that cleans up is still there.
class ChildStep {
public:
    ChildStep() = delete;

    /// Runs `step` in a child process and waits for it. Throws `PackagerFailure` with the message of
    /// what the step threw, or with how the child ended; when a signal comes, ends the child first.
    /// Called while the process has one thread.
    static void run(const SignalHold& signals, const std::function<void()>& step);
};

}  // namespace zpk_packager
