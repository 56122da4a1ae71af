// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <optional>
#include <string>
#include <vector>

/// The program that a package installs with.
struct ZPKSetupProgram {
    /// Full path, or nothing when the package has no program.
    std::optional<std::string> path;

    /// The arguments, each handed over as it stands; nothing when there are none.
    std::optional<std::vector<std::string>> parameters;
};

/// Finds the setup program in what was unpacked. Main thread only.
class ZPKSetupProgramFinder {
public:
    ZPKSetupProgramFinder() = delete;

    /// What the startup description of the staging folder names; where it names nothing that can be
    /// resolved, or there is none in the staging folder, the first executable of the payload in the file
    /// system's own order.
    static ZPKSetupProgram find(const std::string& stagingFolder);
};
