// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "Base/ZPKFailure.h"

/// Why the kernel does not start a program. Its own words blame the program for what is missing elsewhere,
/// "No such file or directory" for a script whose interpreter is not there. May be called from any thread.
class ZPKLaunchFailure {
public:
    ZPKLaunchFailure() = delete;

    /// The failure for the errno value with which starting the program at `path` failed. Where the file
    /// shows a cause, the reason names it: the interpreter or the loader that is missing, another
    /// processor, a file system without execution. Otherwise it is the system's own.
    static ZPKFailure explain(const std::string& path, int error);
};
