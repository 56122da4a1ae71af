// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <optional>
#include <string>

#include "Base/ZPKPath.h"
#include "Platform/ZPKBundle.h"
#include "Platform/ZPKProcess.h"
#include "Platform/ZPKStandardFolders.h"
#include "RunFile/ZPKRunFile.h"
#include "RunFile/ZPKRunFilePlacer.h"
#include "Tools/run/FolderWatcher.h"
#include "Tools/run/RunFolder.h"

namespace {

/// The bundle that a run file holds: its first entry.
ZPKResult<std::string> placedProgram(const ZPKRunFile& runFile, const std::string& folder) {
    const auto& entries = runFile.table().entries;
    const std::string path = entries.empty() ? folder : ZPKPath::join(folder, entries.front().path);
    const std::optional<ZPKBundle> bundle = ZPKBundle::bundleWithPath(path);
    const std::optional<std::string> program = bundle ? bundle->executablePath() : std::nullopt;
    return program ? ZPKResult<std::string>(*program)
                   : ZPKFailure(path, "holds no program that can be started");
}

/// A write beyond the limit of file sizes fails and is told, instead of ending the process.
ZPKOutcome place(const ZPKRunFile& runFile, const std::string& folder) {
    const auto before = std::signal(SIGXFSZ, SIG_IGN);
    ZPKOutcome placed = ZPKRunFilePlacer(runFile).placeIn(folder);
    // The launcher and the setup program find the signal as it was.
    std::signal(SIGXFSZ, before);
    return placed;
}

/// Places the bundle and becomes its launcher; comes back only with a failure.
ZPKFailure becomeLauncher(const ZPKRunFile& runFile, const zpk_run::RunFolder& folder, char** argv) {
    if (const ZPKOutcome placed = place(runFile, folder.path()); !placed) {
        return placed.failure();
    }
    const ZPKResult<std::string> program = placedProgram(runFile, folder.path());
    if (!program) {
        return program.failure();
    }
    ::execv(program->c_str(), argv);
    return ZPKFailure::ofSystem(*program, errno);
}

ZPKFailure run(char** argv) {
    const std::string self = ZPKProcess::executablePath("self").value_or("/proc/self/exe");
    const ZPKResult<ZPKRunFile> runFile = ZPKRunFile::open(self);
    if (!runFile) {
        return runFile.failure();
    }
    const std::optional<std::string> temporaryFolder = ZPKStandardFolders::temporaryFolder();
    if (!temporaryFolder) {
        return {self, "there is no folder for temporary files from which programs may run"};
    }
    zpk_run::RunFolder::removeAbandoned(*temporaryFolder);
    const ZPKResult<zpk_run::RunFolder> folder = zpk_run::RunFolder::makeIn(*temporaryFolder);
    if (!folder) {
        return folder.failure();
    }
    const ZPKOutcome watched = zpk_run::startFolderWatcher(*folder);
    ZPKFailure failure = watched ? becomeLauncher(*runFile, *folder, argv) : watched.failure();
    folder->remove().ignore();
    return failure;
}

}  // namespace

/// The program at the beginning of a run file. Arguments are the launcher's.
int main(int, char** argv) {
    try {
        std::cerr << "Zephyrkit: " << run(argv).message() << "\n";
    } catch (const std::exception& error) {
        std::cerr << "Zephyrkit: " << error.what() << "\n";
    }
    return EXIT_FAILURE;
}
