// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/ShellCompletions.h"

#include <string_view>

namespace zpk_packager {

namespace {

using Argument = CommandTable::Argument;
using Command = CommandTable::Command;
using Value = CommandTable::Value;

constexpr const char* kBashStart = R"(# Completion of zpkpack for bash.
_zpkpack() {
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD-1]}
    local command='' options='' words='' value='' index
    COMPREPLY=()
    # An equals sign is a word of its own here.
    if [[ $word == = ]]; then
        word=
    elif [[ $before == = && $COMP_CWORD -gt 1 ]]; then
        before=${COMP_WORDS[COMP_CWORD-2]}
    fi
    for ((index = 1; index < COMP_CWORD; ++index)); do
        if [[ ${COMP_WORDS[index]} != -* ]]; then
            command=${COMP_WORDS[index]}
            break
        fi
    done
    case $command in
)";

constexpr const char* kBashEnd = R"(        *)
            return
            ;;
    esac
    if [[ $word == -* ]]; then
        value=word words=$options
    fi
    case $value in
        word) mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word") ;;
        folder)
            compopt -o filenames
            mapfile -t COMPREPLY < <(compgen -d -- "$word")
            ;;
        path)
            compopt -o filenames
            mapfile -t COMPREPLY < <(compgen -f -- "$word")
            ;;
    esac
}
complete -F _zpkpack zpkpack
)";

std::string joined(const std::vector<std::string>& words, const std::string& separator) {
    std::string text;
    for (const std::string& word : words) {
        text += (text.empty() ? "" : separator) + word;
    }
    return text;
}

const char* bashValue(Value value) {
    switch (value) {
        case Value::Word:
            return "word";
        case Value::File:
            return "path";
        case Value::Folder:
            return "folder";
        case Value::None:
        case Value::Anything:
            break;
    }
    return "none";
}

/// What is offered where no option asks for a value.
std::string bashCommand(const Command& command, const std::string& operandValue,
                        const std::string& operandWords) {
    std::string options;
    std::string values;
    for (const Argument& argument : command.arguments) {
        if (argument.isOption()) {
            options += (options.empty() ? "" : " ") + joined(argument.names, " ");
        }
        if (argument.isOption() && argument.value != Value::None) {
            values +=
                "                " + joined(argument.names, " | ") + ") value=" + bashValue(argument.value) +
                (argument.words.empty() ? "" : " words='" + joined(argument.words, " ") + "'") + " ;;\n";
        }
    }
    return "        " + (command.name.empty() ? std::string("''") : command.name) +
           ")\n            options='" + options + "' value=" + operandValue +
           (operandWords.empty() ? "" : " words='" + operandWords + "'") + "\n" +
           (values.empty() ? "" : "            case $before in\n" + values + "            esac\n") +
           "            ;;\n";
}

Value operandValue(const Command& command) {
    for (const Argument& argument : command.arguments) {
        if (!argument.isOption()) {
            return argument.value;
        }
    }
    return Value::None;
}

std::vector<std::string> namesOf(const CommandTable& table) {
    std::vector<std::string> names;
    for (const Command& command : table.commands()) {
        names.push_back(command.name);
    }
    return names;
}

/// Between single quotes, where all three shells take everything as it stands; `marks` get a backslash.
std::string quoted(std::string_view text, std::string_view marks = "") {
    std::string result;
    for (const char each : text) {
        if (marks.find(each) != std::string_view::npos) {
            result += '\\';
        }
        result += each == '\'' ? std::string("'\\''") : std::string(1, each);
    }
    return result;
}

std::string zshAction(const Argument& argument) {
    switch (argument.value) {
        case Value::Word:
            return "(" + joined(argument.words, " ") + ")";
        case Value::File:
            return "_files";
        case Value::Folder:
            return "_files -/";
        case Value::None:
        case Value::Anything:
            break;
    }
    return " ";
}

/// One specification of zsh's `_arguments`, in its own line.
std::string zshArgument(const Argument& argument) {
    constexpr std::string_view kMarks = "[]:\\";
    const std::string value =
        argument.placeholder.empty() ? "" : ":" + argument.placeholder + ":" + zshAction(argument);
    if (!argument.isOption()) {
        return " \\\n                '*" + value + "'";
    }
    std::string specification;
    for (const std::string& name : argument.names) {
        const std::string mark = value.empty() ? "" : name.starts_with("--") ? "=" : "+";
        specification += " \\\n                '(" + joined(argument.names, " ") + ")" + name + mark + "[" +
                         quoted(argument.help, kMarks) + "]" + value + "'";
    }
    return specification;
}

std::string zshArguments(const Command& command) {
    std::string text = "_arguments -s";
    for (const Argument& argument : command.arguments) {
        text += zshArgument(argument);
    }
    return text;
}

std::string fishArgument(const Argument& argument, const std::string& condition) {
    std::string line = "complete -c zpkpack -n '" + condition + "'";
    for (const std::string& name : argument.names) {
        line += name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1);
    }
    if (argument.isOption() && argument.value != Value::None) {
        line += " -r";
    }
    switch (argument.value) {
        case Value::Word:
            line += " -a '" + joined(argument.words, " ") + "'";
            break;
        case Value::File:
            line += " -F";
            break;
        case Value::Folder:
            line += " -a '(__fish_complete_directories (commandline -ct))'";
            break;
        case Value::None:
        case Value::Anything:
            break;
    }
    return line + " -d '" + quoted(argument.help, "\\") + "'\n";
}

}  // namespace

std::string ShellCompletions::bash(const CommandTable& table) {
    std::string text = kBashStart + bashCommand(table.program(), "word", joined(namesOf(table), " "));
    for (const Command& command : table.commands()) {
        text += bashCommand(command, bashValue(operandValue(command)), "");
    }
    return text + kBashEnd;
}

std::string ShellCompletions::zsh(const CommandTable& table) {
    std::string commands;
    std::string cases;
    for (const Command& command : table.commands()) {
        commands += "                '" + command.name + ":" + quoted(command.help, ":\\") + "'\n";
        cases += "        " + command.name + ")\n            " + zshArguments(command) + "\n            ;;\n";
    }
    return "#compdef zpkpack\n"
           "# Completion of zpkpack for zsh.\n"
           "_zpkpack() {\n"
           "    local context state state_descr line\n"
           "    typeset -A opt_args\n"
           "    " +
           zshArguments(table.program()) +
           " \\\n                '1: :->command' \\\n                '*:: :->argument' && return\n"
           "    if [[ $state == command ]]; then\n"
           "        local -a commands=(\n" +
           commands +
           "        )\n"
           "        _describe command commands\n"
           "        return\n"
           "    fi\n"
           "    case $words[1] in\n" +
           cases + "    esac\n}\n\n_zpkpack \"$@\"\n";
}

std::string ShellCompletions::fish(const CommandTable& table) {
    std::string text = "# Completion of zpkpack for fish.\ncomplete -c zpkpack -f\n";
    for (const Argument& argument : table.program().arguments) {
        text += fishArgument(argument, "__fish_use_subcommand");
    }
    for (const Command& command : table.commands()) {
        text += "complete -c zpkpack -n __fish_use_subcommand -a " + command.name + " -d '" +
                quoted(command.help, "\\") + "'\n";
        for (const Argument& argument : command.arguments) {
            text += fishArgument(argument, "__fish_seen_subcommand_from " + command.name);
        }
    }
    return text;
}

}  // namespace zpk_packager
