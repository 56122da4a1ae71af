// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/CommandLine.h"

#include <algorithm>
#include <sstream>
#include <string_view>

#include "Base/ZPKNearestName.h"
#include "Tools/zpkpack/BuildCommand.h"
#include "Tools/zpkpack/CheckCommand.h"
#include "Tools/zpkpack/ExtractCommand.h"
#include "Tools/zpkpack/ListCommand.h"
#include "Tools/zpkpack/NewCommand.h"
#include "Tools/zpkpack/PreviewCommand.h"
#include "Tools/zpkpack/ScrambleCommand.h"
#include "Tools/zpkpack/StringsCommand.h"
#include "Tools/zpkpack/VerifyCommand.h"

namespace zpk_packager {

namespace {

/// What is said of a name that nobody knows.
std::string unknown(const std::string& kind, const std::string& argument,
                    const std::vector<std::string>& known) {
    const std::string name = argument.substr(0, argument.find('='));
    const std::string_view nearest = ZPKNearestName::among({known.begin(), known.end()}, name);
    const std::string hint = nearest.empty() ? "" : "; did you mean " + std::string(nearest) + "?";
    return "there is no " + kind + " " + name + hint;
}

bool isOption(const std::string& argument) {
    return argument.size() > 1 && argument[0] == '-' && argument != "--";
}

}  // namespace

CommandLine::CommandLine() : m_program("Makes installer packages, and looks into them.", "zpkpack") {
    m_program.require_subcommand(1);
    m_program.footer("Example:\n  zpkpack build Source -o HelloSetup.app");
    addCommonOptions(m_program);
    add(std::make_unique<BuildCommand>());
    add(std::make_unique<CheckCommand>());
    add(std::make_unique<ExtractCommand>());
    add(std::make_unique<ListCommand>());
    add(std::make_unique<NewCommand>());
    add(std::make_unique<PreviewCommand>());
    add(std::make_unique<ScrambleCommand>(ScrambleCommand::Direction::Scramble));
    add(std::make_unique<StringsCommand>());
    add(std::make_unique<ScrambleCommand>(ScrambleCommand::Direction::Unscramble));
    add(std::make_unique<VerifyCommand>());
}

void CommandLine::add(std::unique_ptr<Command> command) {
    CLI::App& line = command->declare(m_program);
    addCommonOptions(line);
    m_commands.push_back({std::move(command), &line});
}

void CommandLine::addCommonOptions(CLI::App& line) {
    line.set_version_flag("--version", "zpkpack " ZPK_VERSION, "Show the version and exit");
    CLI::Option* const quiet = line.add_flag("-q,--quiet", m_isQuiet, "Print results and errors alone");
    line.add_flag("-v,--verbose", m_isVerbose, "Say more")->excludes(quiet);
}

ExitStatus CommandLine::run(int argc, char** argv, Console& console) {
    try {
        m_program.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return explain(error, console);
    }
    if (m_isQuiet || m_isVerbose) {
        console.setDetail(m_isQuiet ? Console::Detail::Quiet : Console::Detail::Verbose);
    }
    const auto named = std::find_if(m_commands.begin(), m_commands.end(),
                                    [](const Known& known) { return known.line->parsed(); });
    const ExitStatus status = named->command->run(console);
    console.finish();
    return status;
}

ExitStatus CommandLine::explain(const CLI::ParseError& error, Console& console) const {
    if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success)) {
        std::ostringstream text;
        static_cast<void>(m_program.exit(error, text, text));
        console.result(text.str());
        console.finish();
        return ExitStatus::Success;
    }
    const std::string name = unknownName();
    const std::vector<CLI::App*> commands = m_program.get_subcommands();
    // The library calls it a subcommand, which is none of this program's words.
    const bool lacksCommand = commands.empty() && error.get_name() == "RequiredError";
    console.error(!name.empty() ? name : lacksCommand ? "a command is required" : error.what());
    const std::string line = commands.empty() ? "zpkpack" : "zpkpack " + commands.front()->get_name();
    console.note("try " + line + " --help");
    return ExitStatus::WrongUsage;
}

/// An unknown name is the cause also where the library first complains of what lacks because of it.
std::string CommandLine::unknownName() const {
    const std::vector<CLI::App*> commands = m_program.get_subcommands();
    for (const std::string& argument : m_program.remaining()) {
        if (isOption(argument)) {
            return unknown("option", argument, optionNames(m_program));
        }
        if (commands.empty()) {
            return unknown("command", argument, commandNames());
        }
    }
    if (!commands.empty()) {
        const std::vector<std::string> arguments = commands.front()->remaining();
        const auto option = std::find_if(arguments.begin(), arguments.end(), isOption);
        if (option != arguments.end()) {
            return unknown("option", *option, optionNames(*commands.front()));
        }
    }
    return "";
}

std::vector<std::string> CommandLine::commandNames() const {
    std::vector<std::string> names;
    std::transform(m_commands.begin(), m_commands.end(), std::back_inserter(names),
                   [](const Known& known) { return known.line->get_name(); });
    return names;
}

std::vector<std::string> CommandLine::optionNames(const CLI::App& line) {
    std::vector<std::string> names;
    for (const CLI::Option* option : line.get_options()) {
        for (const std::string& name : option->get_lnames()) {
            names.push_back("--" + name);
        }
    }
    return names;
}

}  // namespace zpk_packager
