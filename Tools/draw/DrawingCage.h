// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

/// What the process gives up before it reads a drawing, so that a drawing harms nothing, leads nowhere and
/// comes to its end.
class DrawingCage {
public:
    DrawingCage() = delete;

    /// From now on, for good: no file is opened and nothing is connected to, memory has its bound, and more
    /// than five seconds of processor time end the process (SIGXCPU). In a build that is instrumented nothing
    /// happens: the instruments need more.
    static void enter();
};
