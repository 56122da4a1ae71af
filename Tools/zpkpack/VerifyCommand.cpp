// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/VerifyCommand.h"

#include <cstddef>
#include <exception>
#include <memory>

#include "Archive/Archive.h"
#include "Tools/zpkpack/Console.h"
#include "Tools/zpkpack/ConsoleErrorSink.h"
#include "Tools/zpkpack/LineGuard.h"
#include "Tools/zpkpack/MadePackage.h"
#include "Tools/zpkpack/Manifest.h"
#include "Tools/zpkpack/Progress.h"

namespace zpk_packager {

namespace {

using Content = ZPKPackageLayout::Content;
const char* nameOf(Manifest::Difference::Kind kind) {
    switch (kind) {
        case Manifest::Difference::Kind::Added:
            return "added: ";
        case Manifest::Difference::Kind::Changed:
            return "changed: ";
        case Manifest::Difference::Kind::Missing:
            break;
    }
    return "missing: ";
}

/// What was added since is told and does no harm to what was built.
bool verifyFiles(MadePackage& package, Console& console, Progress& progress) {
    bool isAsExpected = true;
    const Manifest expected = Manifest::inPackage(package);
    for (const Manifest::Difference& difference :
         expected.differencesTo(Manifest::ofPackage(package, &progress))) {
        console.resultLine(nameOf(difference.kind) + difference.path);
        isAsExpected = isAsExpected && difference.kind == Manifest::Difference::Kind::Added;
    }
    return isAsExpected;
}

bool verifyArchive(MadePackage& package, Content content, Console& console, Progress& progress) {
    ConsoleErrorSink sink(console);
    std::size_t members = 0;
    const std::string name = package.nameOf(MadePackage::archivePath(content));
    const bool isWhole = zpk_archive::list(
        name,
        package.plainArchive(content, std::string("reading ") + ZPKPackageLayout::name(content), &progress),
        [&](const zpk_archive::MemberDescription&) { ++members; }, sink);
    console.more(name + ": " + std::to_string(members) + " members");
    return isWhole;
}

/// A failure of one part is told, and the next part looked at all the same.
template <typename Part>
bool tell(Console& console, const Part& part) {
    try {
        return part();
    } catch (const std::exception& failure) {
        console.error(failure.what());
        return false;
    }
}

}  // namespace

CLI::App& VerifyCommand::declare(CLI::App& program) {
    CLI::App& line =
        *program.add_subcommand("verify", "Tell whether a package still is what was built, and readable");
    line.add_option("PACKAGE", m_package, "A bundle, or one file")->required();
    line.footer("Example:\n  zpkpack verify HelloSetup.run");
    return line;
}

ExitStatus VerifyCommand::run(Console& console) {
    const std::unique_ptr<MadePackage> package = MadePackage::open(m_package);
    Progress progress(console);
    const LineGuard guard(console);
    bool isWhole = tell(console, [&] { return verifyFiles(*package, console, progress); });
    for (const Content content : {Content::Info, Content::Data}) {
        isWhole =
            tell(console, [&] { return verifyArchive(*package, content, console, progress); }) && isWhole;
    }
    progress.end();
    if (isWhole) {
        console.note(m_package + " is as it was built");
    }
    return isWhole ? ExitStatus::Success : ExitStatus::Failure;
}

}  // namespace zpk_packager
