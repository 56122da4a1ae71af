// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include <exception>

#include "Tools/zpkpack/CommandLine.h"
#include "Tools/zpkpack/Console.h"

int main(int argc, char** argv) {
    zpk_packager::Console console;
    try {
        return static_cast<int>(zpk_packager::CommandLine().run(argc, argv, console));
    } catch (const std::exception& failure) {
        console.error(failure.what());
        return static_cast<int>(zpk_packager::ExitStatus::Failure);
    }
}
