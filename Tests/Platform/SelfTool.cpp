// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

// For tests: says what the host tells this program about itself. With an argument it first removes its
// own program file.

#include <unistd.h>

#include <filesystem>
#include <iostream>

#include "Platform/ZPKMainBundle.h"
#include "Platform/ZPKProcess.h"
#include "Platform/ZPKRunningApplications.h"

int main(int count, char**) {
    if (count > 1) {
        std::filesystem::remove(std::filesystem::read_symlink("/proc/self/exe"));
    }
    std::cout << "program " << ZPKProcess::executablePath("self").value_or("") << "\n";
    std::cout << "bundle " << ZPKMainBundle::mainBundle().bundlePath() << "\n";
    for (const ZPKRunningApplication& application : ZPKRunningApplications::current()) {
        if (application.processIdentifier == ::getpid()) {
            std::cout << "application " << application.localizedName << "\n";
        }
    }
}
