// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include <malloc.h>

#include <exception>

#include "Tools/zpkpack/CommandLine.h"
#include "Tools/zpkpack/Console.h"

namespace {

/// A piece of memory of this size is the system's again as soon as it is free, also in threads: pieces that
/// are kept for later would add up.
constexpr int kGivenBack = 1 << 20;

}  // namespace

int main(int argc, char** argv) {
    ::mallopt(M_MMAP_THRESHOLD, kGivenBack);
    zpk_packager::Console console;
    try {
        return static_cast<int>(zpk_packager::CommandLine().run(argc, argv, console));
    } catch (const std::exception& failure) {
        console.error(failure.what());
        return static_cast<int>(zpk_packager::ExitStatus::Failure);
    }
}
