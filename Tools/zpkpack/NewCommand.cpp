// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/NewCommand.h"

#include "Base/ZPKPath.h"
#include "Base/ZPKUnicode.h"
#include "Package/ZPKPackageLayout.h"
#include "Tools/zpkpack/Check/PackageStrings.h"
#include "Tools/zpkpack/Console.h"
#include "Tools/zpkpack/PackagerFailure.h"
#include "Tools/zpkpack/SourceWriter.h"
#include "Tools/zpkpack/WholeOutput.h"

namespace zpk_packager {

namespace {

using Content = ZPKPackageLayout::Content;

constexpr unsigned int kFileMode = 0644;
constexpr unsigned int kProgramMode = 0755;

constexpr const char* kStartup =
    R"(<?xml version="1.0" encoding="UTF-8"?>
<!-- What runs once the payload is unpacked.
     Exec   the program; $Data$ stands for the folder in which Data was unpacked
     Param  its one argument, given as it stands, even when it is empty

     A second file, Condition.xml, may stand beside this one. It says which product or which disc has to be
     there before the package installs; without it the package installs everywhere. -->
<Startup Exec="$Data$/setup" Param=""/>
)";

constexpr const char* kSetup =
    R"(#!/bin/sh
# The setup program: put your own in its place. It runs with the rights, the environment and the working
# folder of the person who has opened the package. When it ends, everything that was unpacked is removed.
set -eu

# The folder of this program; the other files of the payload lie beside it.
data=$(dirname "$0")

cat "$data/Greeting.txt"
)";

constexpr const char* kGreeting =
    "Hello! This file lies in the folder Data. Whatever you put there is unpacked on the other machine.\n";

void writeSource(const std::string& folder, const PackageDescription& description) {
    const std::string info = ZPKPackageLayout::folder(folder, Content::Info);
    const std::string data = ZPKPackageLayout::folder(folder, Content::Data);
    for (const std::string& path : {folder, info, data}) {
        SourceWriter::makeFolder(path);
    }
    SourceWriter::writeFile(ZPKPackageLayout::packageStrings(folder),
                            SourceWriter::packageStrings(description), kFileMode);
    SourceWriter::writeFile(ZPKPackageLayout::startupDescription(folder), kStartup, kFileMode);
    SourceWriter::writeFile(ZPKPath::join(data, "setup"), kSetup, kProgramMode);
    SourceWriter::writeFile(ZPKPath::join(data, "Greeting.txt"), kGreeting, kFileMode);
    static_cast<void>(PackageDescription::read(folder));
}

}  // namespace

CLI::App& NewCommand::declare(CLI::App& program) {
    CLI::App& line = *program.add_subcommand("new", "Make a package source to begin with");
    line.add_option("FOLDER", m_folder, "The folder to make")->required();
    line.add_option("--name", m_name,
                    "Name of the bundle; the identifier's end or the folder's name, unless told")
        ->type_name("NAME");
    line.add_option("--identifier", m_identifier,
                    "Its identifier, ending in the name; com.example.NAME, unless told")
        ->type_name("ID");
    line.footer("Example:\n  zpkpack new Source --identifier org.example.HelloSetup");
    return line;
}

ExitStatus NewCommand::run(Console& console) {
    const PackageDescription names = description();
    WholeOutput::make(OutputPlace(m_folder),
                      [&](const std::string&, const std::string& made) { writeSource(made, names); });
    console.resultLine(m_folder);
    console.note("next: zpkpack build " + m_folder + " -o " + names.bundleName + ".app");
    return ExitStatus::Success;
}

PackageDescription NewCommand::description() const {
    PackageDescription names{m_name, m_identifier};
    if (names.bundleName.empty()) {
        names.bundleName =
            m_identifier.empty() ? ZPKPath::lastComponent(m_folder) : ZPKPath::extension(m_identifier);
    }
    if (names.bundleIdentifier.empty()) {
        names.bundleIdentifier = "com.example." + names.bundleName;
    }
    names.displayName = names.bundleName;
    if (const std::string fault = PackageStrings::faultOfValue(names.bundleName); !fault.empty()) {
        throw PackagerFailure("the name " + names.bundleName + " " + fault);
    }
    if (ZPKPath::extension(names.bundleIdentifier) != names.bundleName) {
        throw PackagerFailure("the last part of the identifier " + names.bundleIdentifier +
                              " is not the name " + names.bundleName);
    }
    if (!ZPKUnicode::isUTF8(names.bundleIdentifier)) {
        throw PackagerFailure("the identifier " + names.bundleIdentifier + " is no UTF-8");
    }
    return names;
}

}  // namespace zpk_packager
