// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/ListCommand.h"

#include <functional>
#include <memory>

#include "Package/ZPKPackageLayout.h"
#include "Tools/zpkpack/Console.h"
#include "Tools/zpkpack/ConsoleErrorSink.h"
#include "Tools/zpkpack/LineGuard.h"
#include "Tools/zpkpack/MadePackage.h"
#include "Tools/zpkpack/MemberText.h"
#include "Tools/zpkpack/Progress.h"

namespace zpk_packager {

namespace {

using Content = ZPKPackageLayout::Content;
using Visitor = std::function<void(Content, const zpk_archive::MemberDescription&)>;

/// Goes on to the second archive where the first one is damaged.
bool visitMembers(MadePackage& package, Console& console, Progress* progress, const Visitor& visit) {
    bool isWhole = true;
    for (const Content content : {Content::Info, Content::Data}) {
        try {
            ConsoleErrorSink sink(console);
            isWhole =
                zpk_archive::list(
                    package.nameOf(MadePackage::archivePath(content)),
                    package.plainArchive(content, std::string("reading ") + ZPKPackageLayout::name(content),
                                         progress),
                    [&](const zpk_archive::MemberDescription& member) { visit(content, member); }, sink) &&
                isWhole;
        } catch (const std::exception& failure) {
            console.error(failure.what());
            isWhole = false;
        }
    }
    return isWhole;
}

}  // namespace

CLI::App& ListCommand::declare(CLI::App& program) {
    CLI::App& line = *program.add_subcommand("list", "List what the archives of a package hold");
    line.add_option("PACKAGE", m_package, "A bundle, or one file")->required();
    CLI::Option* const isLong =
        line.add_flag("-l,--long", m_isLong, "Also mode, size, time (UTC) and where a link leads");
    line.add_option("--format", m_format, "How to write it")
        ->check(CLI::IsMember({"text", "json"}))
        ->capture_default_str()
        ->excludes(isLong);
    line.footer("Example:\n  zpkpack list --long HelloSetup.app");
    return line;
}

ExitStatus ListCommand::run(Console& console) {
    const std::unique_ptr<MadePackage> package = MadePackage::open(m_package);
    Progress progress(console);
    const LineGuard guard(console);
    // A bar has no place among the lines of the list.
    Progress* const shown = Console::areResultsOnATerminal() ? nullptr : &progress;
    const bool isJSON = m_format == "json";
    std::string before = isJSON ? "[\n" : "";
    const bool isWhole = visitMembers(*package, console, shown, [&](Content content, const auto& member) {
        if (isJSON) {
            console.result(before + MemberText::json(member, ZPKPackageLayout::name(content)));
            before = ",\n";
        } else {
            console.result((m_isLong ? MemberText::longLine(member) : MemberText::line(member)) + "\n");
        }
    });
    if (isJSON) {
        console.result(before == ",\n" ? "\n]\n" : "[]\n");
    }
    return isWhole ? ExitStatus::Success : ExitStatus::Failure;
}

}  // namespace zpk_packager
