// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Base/ZPKFailure.h"
#include "Package/ZPKCarriedParts.h"

/// The launcher's second stage: the launcher once more, this time on the loader, the C library and the
/// toolkit that the bundle carries, so that it can show windows on a machine that has none of them. The
/// process stays the same. Main thread only, before any other thread.
class ZPKSecondStage {
public:
    /// `frameworks` is the bundle's folder of carried parts, `module` the file that has the windows in it.
    ZPKSecondStage(std::string frameworks, std::string module)
        : m_parts(std::move(frameworks)), m_module(std::move(module)) {}

    /// Whether the environment names a display, or says how to come by one.
    static bool hasDisplay();

    /// Looks for whatever would make the loader give up, since nothing leads back from there, or take a
    /// library of the machine: the parts that the bundle says it carries, what these and the module need, and
    /// a kernel that they can run on.
    ZPKOutcome probe() const;

    /// Becomes the second stage; comes back only with the cause of a failure. `environment` reaches the
    /// second stage as `withoutLoaderVariables` leaves it. A child process tries it first, for a loader that
    /// refuses its libraries, or that the machine does not let run, ends the process that became it.
    ZPKFailure start(int argc, char** argv, char** environment) const;

    /// True in that child process, which has come far enough with its first instruction and is to end with
    /// status 0.
    static bool isTrial(int argc, char** argv);

    /// The environment with the variables that a loader obeys under other names. They are meant for the
    /// target machine's loader, and a library of that machine that is made for a newer C library would
    /// end the carried one.
    static std::vector<std::string> withoutLoaderVariables(char** environment);

    /// What the second stage begins with: gives those variables their names again, at their places, so
    /// that the setup program finds the environment that the launcher was started with.
    static void restoreLoaderVariables(char** environment);

    /// True when a kernel of this release ("6.1.0-18-amd64") runs the carried parts.
    static bool suitsKernel(std::string_view release);

private:
    ZPKOutcome tryStart(std::vector<std::string> variables) const;

    ZPKCarriedParts m_parts;
    std::string m_module;
};
