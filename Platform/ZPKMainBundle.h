// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/ZPKBundle.h"

/// The bundle that the running program belongs to.
class ZPKMainBundle {
public:
    ZPKMainBundle() = delete;

    /// The bundle in which the running program lies (`<bundle>/Contents/Linux/<program>` of
    /// /proc/self/exe), found once from the program's own path, never from the environment or the
    /// working folder; the executable's own folder, as a bundle without a description, for a program
    /// that lies in no bundle. A bundle set with `setMainBundle` goes before both. May be called from
    /// any thread.
    static const ZPKBundle& mainBundle();

    /// Makes `bundle` the main bundle; for programs that work on a bundle they do not lie in.
    /// Called on the main thread before any other thread exists.
    static void setMainBundle(const ZPKBundle& bundle);
};
