// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/CheckCommand.h"

#include "Tools/zpkpack/Check/CheckRules.h"
#include "Tools/zpkpack/Check/FindingReport.h"
#include "Tools/zpkpack/Check/SourceCheck.h"
#include "Tools/zpkpack/Console.h"
#include "Tools/zpkpack/LineGuard.h"
#include "Tools/zpkpack/PackageCheck.h"
#include "Tools/zpkpack/Progress.h"

namespace zpk_packager {

CLI::App& CheckCommand::declare(CLI::App& program) {
    CLI::App& line = *program.add_subcommand("check", "Look for what a package would suffer from");
    CLI::Option* const package =
        line.add_option("PACKAGE", m_package, "A package source, a bundle, or one file");
    line.add_option("--explain", m_explained, "Tell what a check is for, and how to mend")
        ->type_name("CHECK")
        ->excludes(package);
    line.callback([this] {
        if (m_package.empty() && m_explained.empty()) {
            throw CLI::RequiredError("PACKAGE");
        }
    });
    line.add_option("--format", m_format, "How to write the findings")
        ->check(CLI::IsMember({"text", "json", "sarif"}))
        ->capture_default_str();
    line.add_flag("--strict", m_isStrict, "Let warnings count like errors");
    line.footer("Example:\n  zpkpack check --strict Source");
    return line;
}

ExitStatus CheckCommand::run(Console& console) {
    return m_explained.empty() ? check(console) : explain(console);
}

ExitStatus CheckCommand::explain(Console& console) const {
    const CheckRule* const rule = CheckRules::find(m_explained);
    if (rule != nullptr) {
        console.result(std::string(rule->reason) + "\n" + rule->remedy + "\n");
        return ExitStatus::Success;
    }
    const std::string near = CheckRules::nearestName(m_explained);
    console.error("there is no check " + m_explained + (near.empty() ? "" : "; did you mean " + near + "?"));
    return ExitStatus::WrongUsage;
}

ExitStatus CheckCommand::check(Console& console) const {
    FindingList findings;
    if (PackageCheck::isMeant(m_package)) {
        Progress progress(console);
        const LineGuard guard(console);
        PackageCheck(findings, &progress).run(m_package);
    } else {
        SourceCheck(findings).run(m_package);
    }
    console.result(m_format == "json"    ? FindingReport::asJSON(findings)
                   : m_format == "sarif" ? FindingReport::asSARIF(findings, ZPK_VERSION)
                                         : FindingReport::asText(findings));
    const bool fails = findings.errors() > 0 || (m_isStrict && findings.warnings() > 0);
    return fails ? ExitStatus::Failure : ExitStatus::Success;
}

}  // namespace zpk_packager
