// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

// Plays the second stage: writes what it was given, that is its arguments, its environment as it came and
// as it is restored, and its own file, all ended by null characters.

#include <unistd.h>

#include <iostream>
#include <string_view>

#include "InstallerCore/ZPKSecondStage.h"
#include "Platform/ZPKProcess.h"

namespace {

void write(std::string_view text) {
    std::cout << text << '\0';
}

void writeEnvironment(std::string_view title) {
    write(title);
    for (char** entry = environ; *entry != nullptr; ++entry) {
        write(*entry);
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (ZPKSecondStage::isTrial(argc, argv)) {
        return 0;
    }
    write("arguments");
    for (int index = 0; index < argc; ++index) {
        write(argv[index]);
    }
    writeEnvironment("as it came");
    ZPKSecondStage::restoreLoaderVariables(environ);
    writeEnvironment("restored");
    write("program");
    write(ZPKProcess::executablePath("self").value_or(""));
    return 0;
}
