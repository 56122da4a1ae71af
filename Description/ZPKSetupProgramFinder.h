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

    /// The program that `exec` names: the payload folder in place of its token, an application bundle
    /// standing for its main program. Nothing when it is a bundle without one; whether anything is at
    /// another path is not asked.
    static std::optional<std::string> programOfExec(const std::string& exec, const std::string& dataFolder);

    /// The first executable in the payload folder in the file system's own order, which is run where none
    /// is named; nothing when there is none.
    static std::optional<std::string> firstExecutable(const std::string& dataFolder);
};
