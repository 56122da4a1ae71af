// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/CommandTable.h"

#include <string_view>

#include "Tools/zpkpack/Check/CheckRules.h"

namespace zpk_packager {

namespace {

using Argument = CommandTable::Argument;
using Value = CommandTable::Value;

constexpr std::string_view kExampleTitle = "Example:\n  ";

/// The words between the braces with which the library says what a value may be.
std::vector<std::string> wordsIn(const std::string& type) {
    std::vector<std::string> words;
    const std::size_t begin = type.find('{');
    const std::size_t end = type.find('}', begin);
    if (end == std::string::npos) {
        return words;
    }
    std::string_view rest = std::string_view(type).substr(begin + 1, end - begin - 1);
    while (!rest.empty()) {
        const std::string_view word = rest.substr(0, rest.find(','));
        words.emplace_back(word);
        rest.remove_prefix(word.size() == rest.size() ? word.size() : word.size() + 1);
    }
    return words;
}

std::vector<std::string> checkNames() {
    std::vector<std::string> names;
    for (const CheckRule& rule : CheckRules::all()) {
        names.emplace_back(rule.name);
    }
    return names;
}

Value valueOf(const Argument& argument) {
    if (argument.placeholder.empty()) {
        return Value::None;
    }
    if (!argument.words.empty()) {
        return Value::Word;
    }
    if (argument.placeholder == "NAME" || argument.placeholder == "ID") {
        return Value::Anything;
    }
    const bool isFolder = argument.placeholder == "FOLDER" || argument.placeholder == "SOURCE";
    return isFolder ? Value::Folder : Value::File;
}

Argument argumentOf(const CLI::Option& option) {
    Argument argument;
    argument.help = option.get_description();
    argument.isRequired = option.get_required();
    for (const std::string& name : option.get_snames()) {
        argument.names.push_back("-" + name);
    }
    for (const std::string& name : option.get_lnames()) {
        argument.names.push_back("--" + name);
    }
    if (option.get_positional()) {
        argument.placeholder = option.get_single_name();
    } else if (option.get_items_expected_max() > 0) {
        const std::string type = option.get_type_name();
        argument.words = type == "CHECK" ? checkNames() : wordsIn(type);
        const std::string word = type.substr(0, type.find(':'));
        argument.placeholder = word != "TEXT" ? word : argument.words.empty() ? "FILE" : "FORM";
    }
    argument.value = valueOf(argument);
    return argument;
}

/// Also of the groups, which are commands without a name to the library.
void addArguments(const CLI::App& line, std::vector<Argument>& arguments) {
    for (const CLI::Option* const option : line.get_options()) {
        if (option != line.get_help_ptr() || !line.get_name().empty()) {
            arguments.push_back(argumentOf(*option));
        }
    }
    for (const CLI::App* const group : line.get_subcommands([](const CLI::App*) { return true; })) {
        if (group->get_name().empty()) {
            addArguments(*group, arguments);
        }
    }
}

CommandTable::Command commandOf(const CLI::App& line, const std::string& name) {
    CommandTable::Command command{name, line.get_description(), line.get_footer(), {}};
    if (command.example.starts_with(kExampleTitle)) {
        command.example.erase(0, kExampleTitle.size());
    }
    addArguments(line, command.arguments);
    return command;
}

}  // namespace

CommandTable::CommandTable(const CLI::App& program) : m_program(commandOf(program, "")) {
    for (const CLI::App* const line : program.get_subcommands([](const CLI::App*) { return true; })) {
        if (!line->get_name().empty()) {
            m_commands.push_back(commandOf(*line, line->get_name()));
        }
    }
}

}  // namespace zpk_packager
