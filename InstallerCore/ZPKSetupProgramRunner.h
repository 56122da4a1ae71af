// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <vector>

#include "Base/ZPKFailure.h"
#include "Description/ZPKSetupProgramFinder.h"

/// Runs setup programs. Any thread.
class ZPKSetupProgramRunner {
public:
    ZPKSetupProgramRunner() = delete;

    /// Starts the program, if there is one, with this process's environment, `NAME=value` entries besides or
    /// in the stead of those of the same name, and this process's working folder; when `synchronous`, waits
    /// until it has exited. How it exits does not count: the failure is that of a program that cannot be
    /// started, and names what is missing.
    static ZPKOutcome run(const ZPKSetupProgram& program, bool synchronous,
                          const std::vector<std::string>& entries = {});
};
