// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/VerifyCommand.h"

#include <cstddef>
#include <exception>
#include <memory>

#include "Archive/Archive.h"
#include "Tools/zpkpack/Console.h"
#include "Tools/zpkpack/ConsoleErrorSink.h"
#include "Tools/zpkpack/MadePackage.h"
#include "Tools/zpkpack/Manifest.h"

namespace zpk_packager {

namespace {

using Content = ZPKPackageLayout::Content;
using Entries = std::vector<Manifest::Entry>;

/// Goes through both lists side by side; both are in the order of paths. What was added since is told and
/// does no harm to what was built.
bool compare(const Entries& expected, const Entries& found, Console& console) {
    bool isAsExpected = true;
    std::size_t there = 0;
    for (const Manifest::Entry& entry : expected) {
        while (there < found.size() && found[there].path < entry.path) {
            console.resultLine("added: " + found[there++].path);
        }
        const bool isThere = there < found.size() && found[there].path == entry.path;
        if (!isThere || found[there].sum != entry.sum) {
            console.resultLine((isThere ? "changed: " : "missing: ") + entry.path);
            isAsExpected = false;
        }
        there += isThere ? 1 : 0;
    }
    for (; there < found.size(); ++there) {
        console.resultLine("added: " + found[there].path);
    }
    return isAsExpected;
}

bool verifyFiles(MadePackage& package, Console& console) {
    const Manifest expected = Manifest::inPackage(package);
    return compare(expected.entries(), Manifest::ofPackage(package).entries(), console);
}

bool verifyArchive(MadePackage& package, Content content, Console& console) {
    ConsoleErrorSink sink(console);
    std::size_t members = 0;
    const std::string name = package.nameOf(MadePackage::archivePath(content));
    const bool isWhole = zpk_archive::list(
        name, package.plainArchive(content), [&](const zpk_archive::MemberDescription&) { ++members; }, sink);
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
    bool isWhole = tell(console, [&] { return verifyFiles(*package, console); });
    for (const Content content : {Content::Info, Content::Data}) {
        isWhole = tell(console, [&] { return verifyArchive(*package, content, console); }) && isWhole;
    }
    if (isWhole) {
        console.note(m_package + " is as it was built");
    }
    return isWhole ? ExitStatus::Success : ExitStatus::Failure;
}

}  // namespace zpk_packager
