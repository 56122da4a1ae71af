// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

// Writes what is installed beside the packager and says what its commands take: manual pages and completions.

#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <string>

#include "Tools/zpkpack/CommandLine.h"
#include "Tools/zpkpack/CommandTable.h"
#include "Tools/zpkpack/ManualPages.h"
#include "Tools/zpkpack/ShellCompletions.h"

using namespace zpk_packager;

namespace {

void writeFile(const std::filesystem::path& path, const std::string& text) {
    std::filesystem::create_directories(path.parent_path());
    std::ofstream file;
    file.exceptions(std::ios::failbit | std::ios::badbit);
    file.open(path, std::ios::binary | std::ios::trunc);
    file << text;
    file.close();
}

void writePages(const std::filesystem::path& folder, const std::string& date) {
    const CommandLine line;
    const CommandTable table(line.program());
    const ManualPages pages(table, ZPK_VERSION, date);
    writeFile(folder / "man/man1/zpkpack.1", pages.program());
    for (const CommandTable::Command& command : table.commands()) {
        writeFile(folder / ("man/man1/zpkpack-" + command.name + ".1"), pages.command(command));
    }
    writeFile(folder / "completions/zpkpack.bash", ShellCompletions::bash(table));
    writeFile(folder / "completions/_zpkpack", ShellCompletions::zsh(table));
    writeFile(folder / "completions/zpkpack.fish", ShellCompletions::fish(table));
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: %s FOLDER DATE\n", argv[0]);
        return 2;
    }
    try {
        writePages(argv[1], argv[2]);
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "%s: %s\n", argv[0], failure.what());
        return 1;
    }
    return 0;
}
