// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Tools/zpkpack/Command.h"
#include "Tools/zpkpack/Console.h"

namespace zpk_packager {

/// Takes the command line apart and has the command done that it names. Used once.
class CommandLine {
public:
    CommandLine();

    /// The exit status. Throws `std::exception` with the cause of a command's failure.
    ExitStatus run(int argc, char** argv, Console& console);

    /// What was declared.
    const CLI::App& program() const { return m_program; }

private:
    struct Known {
        std::unique_ptr<Command> command;
        CLI::App* line;
    };

    void add(std::unique_ptr<Command> command);
    void addCommonOptions(CLI::App& line);
    ExitStatus explain(const CLI::ParseError& error, Console& console) const;
    std::string unknownName() const;
    std::vector<std::string> commandNames() const;
    static std::vector<std::string> optionNames(const CLI::App& line);

    CLI::App m_program;
    std::vector<Known> m_commands;
    bool m_isQuiet = false;
    bool m_isVerbose = false;
};

}  // namespace zpk_packager
