// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/ScrambleCommand.h"

#include "Base/ZPKPath.h"
#include "Package/ZPKScrambler.h"
#include "Platform/ZPKFileHandle.h"
#include "Tools/zpkpack/ChildStep.h"
#include "Tools/zpkpack/Console.h"
#include "Tools/zpkpack/OutputPlace.h"
#include "Tools/zpkpack/PackagerFailure.h"
#include "Tools/zpkpack/SignalHold.h"
#include "Tools/zpkpack/WorkFolder.h"

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
    const OutputPlace output(m_destination, m_replace);
    output.checkFree();
    const SignalHold signals;
    const WorkFolder workFolder = WorkFolder::beside(output.path());
    const std::string made = ZPKPath::join(workFolder.path(), "made");
    ChildStep::run(signals, [&] { rotate(made); });
    output.put(made);
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
