// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "Tools/zpkpack/CommandTable.h"

namespace zpk_packager {

/// What shells offer to whoever types a command line of the packager: a script for each shell.
class ShellCompletions {
public:
    ShellCompletions() = delete;

    static std::string bash(const CommandTable& table);
    static std::string zsh(const CommandTable& table);
    static std::string fish(const CommandTable& table);
};

}  // namespace zpk_packager
