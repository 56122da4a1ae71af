// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <functional>
#include <string>

#include "Tools/zpkpack/OutputPlace.h"
#include "Tools/zpkpack/Progress.h"

namespace zpk_packager {

/// An output that appears complete or not at all, whatever ends the work.
class WholeOutput {
public:
    WholeOutput() = delete;

    /// Is given a private folder and leaves the output in it, at `made`. Runs in a process of its own;
    /// throws `PackagerFailure`.
    using Maker = std::function<void(const std::string& workFolder, const std::string& made)>;

    /// Has the output made beside its place and puts it there. Throws `PackagerFailure`; a signal that asks
    /// the process to end does so when all is cleaned up. Called while the process has one thread.
    /// `progress`, if it is given, is what the maker shows, and ends with it.
    static void make(const OutputPlace& output, const Maker& maker, Progress* progress = nullptr);
};

}  // namespace zpk_packager
