// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/PreviewCommand.h"

#include "Base/ZPKPath.h"
#include "Tools/zpkpack/Console.h"
#include "Tools/zpkpack/ProgramParts.h"
#include "Tools/zpkpack/Progress.h"
#include "Tools/zpkpack/WholeOutput.h"

namespace zpk_packager {

namespace {

constexpr int kLargestScale = 4;

}  // namespace

CLI::App& PreviewCommand::declare(CLI::App& program) {
    m_options.templatePath = ProgramParts::launcherTemplate();
    m_options.programPath = ProgramParts::previewProgram();
    m_options.drawProgramPath = ProgramParts::drawProgram();
    CLI::App& line =
        *program.add_subcommand("preview", "Make pictures of all windows and alerts of a package");
    line.add_option("PACKAGE", m_options.package, "A package source, a bundle, or one file")->required();
    line.add_option("-o,--output", m_folder, "The folder to make")->type_name("FOLDER")->required();
    line.add_option("--lang", m_options.languages, "Codes of the languages to show; all, unless told")
        ->delimiter(',')
        ->type_name("CODE,...");
    line.add_option("--scale", m_options.scale, "Pixels for each of an ordinary screen's")
        ->check(CLI::Range(1, kLargestScale))
        ->capture_default_str();
    line.add_flag("--dark", m_options.isDark, "Show them as on a dark desktop");
    line.add_option("--template", m_options.templatePath,
                    "Launcher bundle with the forms, and the texts of a source without its own")
        ->type_name("FOLDER")
        ->capture_default_str();
    line.footer("Example:\n  zpkpack preview Source -o Pictures --lang en,ja --scale 2");
    return line;
}

ExitStatus PreviewCommand::run(Console& console) {
    Progress progress(console);
    WholeOutput::make(
        OutputPlace(m_folder),
        [&](const std::string& workFolder, const std::string& made) {
            PreviewPictures(m_options, &progress).make(workFolder, made);
        },
        &progress);
    for (const std::string& file : PreviewPictures::filesIn(m_folder)) {
        console.resultLine(ZPKPath::join(m_folder, file));
    }
    return ExitStatus::Success;
}

}  // namespace zpk_packager
