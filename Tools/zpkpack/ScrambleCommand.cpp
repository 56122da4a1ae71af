// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/ScrambleCommand.h"

#include "Package/ZPKScrambler.h"
#include "Platform/ZPKFileHandle.h"
#include "Tools/zpkpack/Console.h"
#include "Tools/zpkpack/PackagerFailure.h"
#include "Tools/zpkpack/WholeOutput.h"

namespace zpk_packager {

CLI::App& ScrambleCommand::declare(CLI::App& program) {
    const bool scrambles = m_direction == Direction::Scramble;
    CLI::App& line =
        scrambles ? *program.add_subcommand("scramble", "Rotate the bytes of a plain archive as packages do")
                  : *program.add_subcommand("unscramble", "Undo what scramble does");
    line.add_option("SRC", m_source, scrambles ? "The plain archive" : "The archive of a package")
        ->required();
    line.add_option("DST", m_destination, "The file to make")->required();
    line.add_flag("-f,--force", m_replace, "Replace a file that is there");
    line.footer(scrambles ? "Example:\n  zpkpack scramble Data.dat Data.datx"
                          : "Example:\n  zpkpack unscramble Hello.app/Contents/Resources/Data.datx Data.dat");
    return line;
}

ExitStatus ScrambleCommand::run(Console&) {
    WholeOutput::make(OutputPlace(m_destination, m_replace),
                      [&](const std::string&, const std::string& made) { rotate(made); });
    return ExitStatus::Success;
}

void ScrambleCommand::rotate(const std::string& made) const {
    // What is no file would be copied as it is.
    if (const ZPKResult<ZPKFileHandle> source = ZPKFileHandle::forReadingAtPath(m_source); !source) {
        throw PackagerFailure(source.failure());
    }
    require(m_direction == Direction::Scramble ? ZPKScrambler::scramble(m_source, made)
                                               : ZPKScrambler::unscramble(m_source, made));
}

}  // namespace zpk_packager
