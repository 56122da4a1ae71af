// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace zpk_packager {

/// What the commands take, as their own declarations say it: what the manual pages and the completions of
/// shells are made of.
class CommandTable {
public:
    /// What a shell can offer for a value.
    enum class Value { None, Word, File, Folder, Anything };

    struct Argument {
        /// The names of an option with their dashes, short ones first; none for an operand.
        std::vector<std::string> names;
        /// What stands for the value; empty for an option without one.
        std::string placeholder;
        std::string help;
        /// The words that a value may be.
        std::vector<std::string> words;
        Value value = Value::None;
        bool isRequired = false;

        bool isOption() const { return !names.empty(); }
    };

    struct Command {
        /// Empty for the program itself.
        std::string name;
        std::string help;
        std::string example;
        std::vector<Argument> arguments;
    };

    /// Of the program whose commands are declared in `program`.
    explicit CommandTable(const CLI::App& program);

    const Command& program() const { return m_program; }
    const std::vector<Command>& commands() const { return m_commands; }

private:
    Command m_program;
    std::vector<Command> m_commands;
};

}  // namespace zpk_packager
