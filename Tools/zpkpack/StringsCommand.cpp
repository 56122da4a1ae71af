// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/StringsCommand.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include "Tools/zpkpack/Check/CheckRules.h"
#include "Tools/zpkpack/Check/FindingReport.h"
#include "Tools/zpkpack/Console.h"
#include "Tools/zpkpack/StringsReport.h"
#include "Tools/zpkpack/TextExport.h"
#include "Tools/zpkpack/TextImport.h"
#include "Tools/zpkpack/WholeOutput.h"

namespace zpk_packager {

namespace {

/// What leaves open which texts a table holds.
bool isFault(const Finding& finding) {
    const std::string_view name = finding.rule->name;
    return name != "key-unknown" && name != "dollar";
}

/// Tells the faults of the tables; false where there are any.
bool areSound(const FindingList& findings, Console& console) {
    bool isSound = true;
    for (const Finding& finding : findings.findings()) {
        if (isFault(finding)) {
            console.error(FindingReport::line(finding));
            isSound = false;
        }
    }
    return isSound;
}

}  // namespace

CLI::App& StringsCommand::declare(CLI::App& program) {
    CLI::App& line = *program.add_subcommand("strings", "Tell what the texts of each language lack");
    line.add_option("SOURCE", m_source, "Folder with UILang/")->required();
    CLI::Option* const format = line.add_option("--format", m_format, "How to write it")
                                    ->check(CLI::IsMember({"text", "json"}))
                                    ->capture_default_str();
    CLI::Option* const exported =
        line.add_option("--export-po", m_exportFolder,
                        "Folder to make, with a PO file of each language for translators")
            ->type_name("FOLDER")
            ->excludes(format);
    line.add_option("--import-po", m_importFolder, "Folder with PO files whose texts go into the tables")
        ->type_name("FOLDER")
        ->excludes(format)
        ->excludes(exported);
    line.footer("Example:\n  zpkpack strings Source --export-po Translations");
    return line;
}

ExitStatus StringsCommand::run(Console& console) {
    FindingList findings;
    const SourceTexts texts(m_source, findings);
    const bool isSound = areSound(findings, console);
    if (m_exportFolder.empty() && m_importFolder.empty()) {
        console.result(m_format == "json" ? StringsReport::asJSON(texts) : StringsReport::asText(texts));
    } else if (isSound && !m_exportFolder.empty()) {
        exportTexts(texts, console);
    } else if (isSound) {
        importTexts(texts, console);
    }
    return isSound ? ExitStatus::Success : ExitStatus::Failure;
}

void StringsCommand::exportTexts(const SourceTexts& texts, Console& console) const {
    WholeOutput::make(OutputPlace(m_exportFolder),
                      [&](const std::string&, const std::string& made) { TextExport(texts).writeTo(made); });
    console.resultLine(m_exportFolder);
}

void StringsCommand::importTexts(const SourceTexts& texts, Console& console) const {
    TextImport import(texts);
    import.read(m_importFolder);
    const std::vector<std::string> changed = import.apply();
    for (const std::string& path : changed) {
        console.resultLine(path);
    }
    if (changed.empty()) {
        console.note("every table says the same already");
    }
}

}  // namespace zpk_packager
