// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/BuildCommand.h"

#include <charconv>
#include <cstdint>
#include <optional>
#include <string>

#include "Archive/Archive.h"
#include "Base/ZPKEnvironment.h"
#include "Tools/zpkpack/Check/CheckRules.h"
#include "Tools/zpkpack/Check/FindingReport.h"
#include "Tools/zpkpack/Check/SourceCheck.h"
#include "Tools/zpkpack/Console.h"
#include "Tools/zpkpack/OutputPlace.h"
#include "Tools/zpkpack/PackageBuilder.h"
#include "Tools/zpkpack/PackagerFailure.h"
#include "Tools/zpkpack/ProgramParts.h"

namespace zpk_packager {

namespace {

/// The time that reproducible builds are told by the environment; nothing when they are not.
std::optional<std::int64_t> timeOfSource() {
    const std::optional<std::string> text = ZPKEnvironment::value("SOURCE_DATE_EPOCH");
    if (!text) {
        return std::nullopt;
    }
    std::int64_t seconds = -1;
    const char* const end = text->data() + text->size();
    const std::from_chars_result result = std::from_chars(text->data(), end, seconds);
    if (result.ec != std::errc() || result.ptr != end || seconds < 0 || seconds > zpk_archive::kLatestTime) {
        throw PackagerFailure("SOURCE_DATE_EPOCH is " + *text + ", which is no time in seconds since 1970");
    }
    return seconds;
}

}  // namespace

CLI::App& BuildCommand::declare(CLI::App& program) {
    m_options.templatePath = ProgramParts::launcherTemplate();
    m_options.runProgramPath = ProgramParts::runProgram();
    m_options.drawProgramPath = ProgramParts::drawProgram();
    CLI::App& line = *program.add_subcommand("build", "Make a package of a package source");
    line.add_option("SOURCE", m_options.sourceFolder, "Folder with Package.strings, Info/, Data/, UILang/")
        ->required();
    line.add_option("-o,--output", m_options.outputPath,
                    "The package to make: NAME.app, a bundle, or NAME.run, one file")
        ->type_name("PACKAGE")
        ->check([](const std::string& path) { return OutputPlace::faultOfName(path); })
        ->required();
    line.add_option("--template", m_options.templatePath, "Launcher bundle without archives")
        ->type_name("FOLDER")
        ->capture_default_str();
    CLI::Option* const frameworks =
        line.add_option("--frameworks", m_options.frameworksPath,
                        "Folder to carry in the place of the template's Frameworks")
            ->type_name("FOLDER");
    line.add_flag_callback(
            "--without-windows", [this] { m_options.withWindows = false; }, "Carry nothing for windows")
        ->excludes(frameworks);
    line.add_flag("-f,--force", m_options.replace, "Replace a package that is there");
    line.footer("Example:\n  zpkpack build Source -o HelloSetup.run");
    return line;
}

bool BuildCommand::isSound(Console& console) const {
    FindingList findings;
    SourceCheck(findings).run(m_options.sourceFolder);
    for (const Finding& finding : findings.findings()) {
        if (finding.rule->severity == CheckSeverity::Error) {
            console.error(FindingReport::line(finding));
        } else {
            console.more(FindingReport::line(finding));
        }
    }
    return findings.errors() == 0;
}

ExitStatus BuildCommand::run(Console& console) {
    if (!isSound(console)) {
        return ExitStatus::Failure;
    }
    m_options.time = timeOfSource();
    Progress progress(console);
    const PackageSummary summary = PackageBuilder(m_options, &progress).build();
    console.resultLine(m_options.outputPath);
    console.result(summary.text());
    return ExitStatus::Success;
}

}  // namespace zpk_packager
