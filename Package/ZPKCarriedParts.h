// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <utility>
#include <vector>

#include "Base/ZPKFailure.h"

/// The parts that a bundle carries for its windows: a loader, the launcher's second stage, and what both
/// need, each named in a list that was made when they were put there. May be used from any thread.
class ZPKCarriedParts {
public:
    /// `folder` is the one that holds them: `Contents/Frameworks` of a bundle.
    explicit ZPKCarriedParts(std::string folder) : m_folder(std::move(folder)) {}

    const std::string& folder() const { return m_folder; }
    std::string loader() const { return path("ld-linux-x86-64.so.2"); }

    /// The launcher's second stage.
    std::string program() const { return path("Zephyrkit-desktop"); }

    /// Looks for all of them: both programs can be executed, every library is one, and every other part of
    /// the list is a file with contents. Whatever library they need is among them as well, and so is what
    /// `user` needs, a library elsewhere that runs on them: the loader would take it from the machine. The
    /// failure names the first that is not.
    ZPKOutcome find(const std::string& user = {}) const;

    /// The full paths of the parts in the list. Fails when there is no list.
    ZPKResult<std::vector<std::string>> listed() const;

private:
    std::string path(const std::string& name) const { return m_folder + "/" + name; }
    ZPKOutcome findWithLibraries(std::vector<std::string> files) const;

    std::string m_folder;
};
