// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <string>

#include "Base/ZPKTerminalText.h"
#include "Tools/zpkpack/BuildOptions.h"
#include "Tools/zpkpack/PackageBuilder.h"

namespace {

/// What lies beside this program under a name.
std::string besideThisProgram(const char* name) {
    std::error_code ignored;
    return (std::filesystem::read_symlink("/proc/self/exe", ignored).parent_path() / name).string();
}

/// Takes the command line apart and does what it says; gives the exit status.
int run(int argc, char** argv) {
    CLI::App app("Makes installer packages: one bundle with a launcher and two scrambled archives.",
                 "zpkpack");
    app.require_subcommand(1);

    zpk_packager::BuildOptions options;
    options.templatePath = besideThisProgram("Zephyrkit.app");
    options.runProgramPath = besideThisProgram("zephyrkit-run");
    CLI::App* build = app.add_subcommand("build", "Make a package of a package source");
    build->add_option("SOURCE", options.sourceFolder, "Folder with Package.strings, Info/, Data/, UILang/")
        ->required();
    build
        ->add_option("-o,--output", options.outputPath,
                     "The package to make: NAME.app, a bundle, or NAME.run, one file")
        ->required();
    build->add_option("--template", options.templatePath, "Launcher bundle without archives")
        ->capture_default_str();
    CLI::Option* frameworks = build->add_option("--frameworks", options.frameworksPath,
                                                "Folder to carry in the place of the template's Frameworks");
    build->add_flag("!--without-windows", options.withWindows, "Carry nothing for windows")
        ->excludes(frameworks);
    build->add_flag("-f,--force", options.replace, "Replace a package that is there");
    CLI11_PARSE(app, argc, argv);

    const zpk_packager::PackageSummary summary = zpk_packager::PackageBuilder(options).build();
    std::cout << options.outputPath << "\n" << summary.text();
    return EXIT_SUCCESS;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (const std::exception& error) {
        std::cerr << "zpkpack: " << ZPKTerminalText::printable(error.what()) << "\n";
        return EXIT_FAILURE;
    }
}
