// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

// For tests: says what the host tells this program about itself. With an argument it first removes its
// own program file.

#include <unistd.h>

#include <filesystem>
#include <iostream>

#include "Platform/ZPKBundle.h"
#include "Platform/ZPKWorkspace.h"

int main(int count, char**) {
    if (count > 1) {
        std::filesystem::remove(std::filesystem::read_symlink("/proc/self/exe"));
    }
    std::cout << "bundle " << ZPKBundle::mainBundle().bundlePath() << "\n";
    for (const ZPKRunningApplication& application : ZPKWorkspace::runningApplications()) {
        if (application.processIdentifier == ::getpid()) {
            std::cout << "application " << application.localizedName << "\n";
        }
    }
}
