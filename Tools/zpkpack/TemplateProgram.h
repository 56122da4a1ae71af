// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <vector>

#include "Platform/ZPKTask.h"

namespace zpk_packager {

/// The packager's own programs that draw. They run on the libraries that the launcher template beside them
/// carries, so that the machine needs no toolkit.
class TemplateProgram {
public:
    TemplateProgram() = delete;

    /// Runs the program at `path` to its end, or to the end of this process; `task` tells afterwards how it
    /// came about. Changes the environment of the process. Throws `PackagerFailure` when it does not start.
    static void run(ZPKTask& task, const std::string& path, std::vector<std::string> arguments);
};

}  // namespace zpk_packager
