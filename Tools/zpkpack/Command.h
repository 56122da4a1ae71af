// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <CLI/CLI.hpp>

namespace zpk_packager {

class Console;

/// How the program ends, for scripts.
enum class ExitStatus { Success = 0, Failure = 1, WrongUsage = 2 };

/// One word of the command line and what it does.
class Command {
public:
    Command() = default;
    virtual ~Command() = default;
    Command(const Command&) = delete;
    Command& operator=(const Command&) = delete;

    /// Adds the command to `program`, with its arguments, which are kept here, and an example as its
    /// footer; gives what was added.
    virtual CLI::App& declare(CLI::App& program) = 0;

    /// Does it with the arguments that were given. `Failure` also says that there are findings. Throws
    /// `std::exception` with the cause.
    virtual ExitStatus run(Console& console) = 0;
};

}  // namespace zpk_packager
