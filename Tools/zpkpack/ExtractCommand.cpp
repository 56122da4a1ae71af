// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/ExtractCommand.h"

#include <memory>

#include "Tools/zpkpack/Console.h"
#include "Tools/zpkpack/MadePackage.h"
#include "Tools/zpkpack/PackageExtractor.h"
#include "Tools/zpkpack/WholeOutput.h"

namespace zpk_packager {

CLI::App& ExtractCommand::declare(CLI::App& program) {
    CLI::App& line = *program.add_subcommand("extract", "Make a package source of a package");
    line.add_option("PACKAGE", m_package, "A bundle, or one file")->required();
    line.add_option("-o,--output", m_folder, "The folder to make")->type_name("FOLDER")->required();
    line.footer("Example:\n  zpkpack extract HelloSetup.run -o Source");
    return line;
}

ExitStatus ExtractCommand::run(Console& console) {
    const OutputPlace output(m_folder);
    output.checkFree();
    const std::unique_ptr<MadePackage> package = MadePackage::open(m_package);
    Progress progress(console);
    WholeOutput::make(
        output,
        [&](const std::string& workFolder, const std::string& made) {
            PackageExtractor(*package, workFolder, &progress).extractTo(made);
        },
        &progress);
    console.resultLine(m_folder);
    return ExitStatus::Success;
}

}  // namespace zpk_packager
