// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/ManualPages.h"

#include <string_view>
#include <utility>

namespace zpk_packager {

namespace {

using Argument = CommandTable::Argument;

constexpr const char* kExitStatus =
    ".SH EXIT STATUS\n"
    ".TP\n.B 0\nIt is done, and nothing was found.\n"
    ".TP\n.B 1\nIt could not be done, or there are findings.\n"
    ".TP\n.B 2\nThe command line is wrong.\n";

constexpr const char* kSurroundings =
    ".SH ENVIRONMENT\n"
    ".TP\n.B NO_COLOR\nWhere it is set, nothing is coloured, on terminals either.\n"
    ".TP\n.B SOURCE_DATE_EPOCH\n"
    "The time, in seconds since 1970, that everything in a package gets instead of its own.\n"
    ".SH FILES\n"
    ".TP\n.I ../lib/zephyrkit/Zephyrkit.app\n"
    "The launcher of which every package is a copy, as seen from the program's folder.\n"
    ".TP\n.I ../lib/zephyrkit/zephyrkit\\-run\n"
    "The program with which every package of one file begins.\n";

/// The text as roff takes it for itself: no mark of its own, and dashes that can be copied.
std::string plain(std::string_view text) {
    std::string result = text.starts_with('.') || text.starts_with('\'') ? "\\&" : "";
    for (const char each : text) {
        if (each == '\\') {
            result += "\\e";
        } else if (each == '-') {
            result += "\\-";
        } else if (each == '\n') {
            result += "\n.br\n";
        } else {
            result += each;
        }
    }
    return result;
}

std::string withSmallStart(std::string text) {
    if (!text.empty() && text[0] >= 'A' && text[0] <= 'Z') {
        text[0] = static_cast<char>(text[0] - 'A' + 'a');
    }
    return text;
}

std::string withoutFullStop(std::string text) {
    if (text.ends_with('.')) {
        text.pop_back();
    }
    return text;
}

std::string italic(const std::string& text) {
    return "\\fI" + plain(text) + "\\fR";
}

std::string bold(const std::string& text) {
    return "\\fB" + plain(text) + "\\fR";
}

std::string title(const Argument& argument) {
    std::string names;
    for (const std::string& name : argument.names) {
        names += (names.empty() ? "" : ", ") + bold(name);
    }
    const std::string value = argument.placeholder.empty() ? "" : italic(argument.placeholder);
    return names + (names.empty() || value.empty() ? "" : " ") + value;
}

std::string entry(const Argument& argument) {
    std::string words;
    for (const std::string& word : argument.words) {
        words += (words.empty() ? "" : ", ") + bold(word);
    }
    return ".TP\n" + title(argument) + "\n" + plain(argument.help) + "." +
           (words.empty() ? "" : "\nOne of " + words + ".") + "\n";
}

std::string section(const std::string& name, const CommandTable::Command& command, bool ofOptions) {
    std::string entries;
    for (const Argument& argument : command.arguments) {
        entries += argument.isOption() == ofOptions ? entry(argument) : "";
    }
    return entries.empty() ? "" : ".SH " + name + "\n" + entries;
}

std::string synopsis(const CommandTable::Command& command) {
    std::string line = ".SH SYNOPSIS\n" + bold("zpkpack " + command.name) + " [" + italic("OPTION") + "...]";
    for (const Argument& argument : command.arguments) {
        if (argument.isOption() && argument.isRequired) {
            line += " " + bold(argument.names.front()) + " " + italic(argument.placeholder);
        }
    }
    for (const Argument& argument : command.arguments) {
        if (!argument.isOption()) {
            const std::string operand = italic(argument.placeholder);
            line += argument.isRequired ? " " + operand : " [" + operand + "]";
        }
    }
    return line + "\n";
}

std::string example(const CommandTable::Command& command) {
    return ".SH EXAMPLES\n.nf\n" + plain(command.example) + "\n.fi\n";
}

}  // namespace

ManualPages::ManualPages(const CommandTable& table, std::string version, std::string date)
    : m_table(table), m_version(std::move(version)), m_date(std::move(date)) {}

std::string ManualPages::head(const std::string& name, const std::string& help) const {
    std::string capitals = name;
    for (char& each : capitals) {
        each = each >= 'a' && each <= 'z' ? static_cast<char>(each - 'a' + 'A') : each;
    }
    return ".TH " + plain(capitals) + " 1 " + m_date + " \"Zephyrkit " + m_version +
           "\" \"Zephyrkit\"\n.SH NAME\n" + plain(name) + " \\- " +
           plain(withoutFullStop(withSmallStart(help))) + "\n";
}

std::string ManualPages::program() const {
    const CommandTable::Command& program = m_table.program();
    std::string commands;
    std::string pages;
    for (const CommandTable::Command& command : m_table.commands()) {
        commands += ".TP\n" + bold(command.name) + "\n" + plain(command.help) + ".\n";
        pages +=
            (pages.empty() ? "" : " ,\n") + std::string(".BR ") + plain("zpkpack-" + command.name) + " (1)";
    }
    return head("zpkpack", program.help) + ".SH SYNOPSIS\n" + bold("zpkpack") + " " + italic("COMMAND") +
           " [" + italic("OPTION") + "...] " + italic("ARGUMENT") + "...\n" +
           ".SH DESCRIPTION\n"
           "A package is a launcher with a setup program and whatever that needs, as a folder or as one "
           "file, which\n"
           "opens on every Linux desktop. It is made of a package source: a folder with the files of the "
           "package\n"
           "and a few words on them.\n"
           "Results go to standard output, messages to standard error.\n" +
           ".SH COMMANDS\n" + commands + section("OPTIONS", program, true) + kExitStatus + kSurroundings +
           example(program) + ".SH SEE ALSO\n" + pages + "\n";
}

std::string ManualPages::command(const CommandTable::Command& command) const {
    return head("zpkpack-" + command.name, command.help) + synopsis(command) + ".SH DESCRIPTION\n" +
           plain(command.help) + ".\n" + section("ARGUMENTS", command, false) +
           section("OPTIONS", command, true) + kExitStatus + example(command) +
           ".SH SEE ALSO\n.BR zpkpack (1)\n";
}

}  // namespace zpk_packager
