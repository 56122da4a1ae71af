// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

/// Whether the person has told the desktop that moving things disturb. Main thread only.
class ZPKReducedMotion {
public:
    ZPKReducedMotion() = delete;

    /// Asks the desktop's settings, where there are any, and goes on at once; once in a process.
    static void askDesktop();

    /// True as soon as the desktop has said so.
    static bool isWished() { return s_isWished; }

private:
    static bool s_isWished;
};
