// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <optional>
#include <string>

#include "Base/ZPKDescriptorIO.h"
#include "Base/ZPKPath.h"
#include "Platform/ZPKLaunchFailure.h"
#include "Platform/ZPKProcess.h"
#include "Platform/ZPKStandardFolders.h"
#include "RunFile/ZPKRunFile.h"
#include "RunFile/ZPKRunFilePlacer.h"
#include "Tools/run/ErrorWindow.h"
#include "Tools/run/FolderWatcher.h"
#include "Tools/run/RunFolder.h"

namespace {

/// Where the process was started without streams, nothing of its own may stand in their places: the watcher
/// lets go of them, and the folder's lock with them. The launcher finds them closed as they were.
void fillPlacesOfStreams() {
    int place = -1;
    do {
        place = ::open("/dev/null", O_RDWR | O_CLOEXEC);
    } while (place >= 0 && place <= STDERR_FILENO);
    if (place >= 0) {
        ::close(place);
    }
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
    const std::string program = ZPKPath::join(folder.path(), runFile.table().program);
    ::execv(program.c_str(), argv);
    return ZPKLaunchFailure::explain(program, errno);
}

ZPKFailure run(char** argv) {
    const std::string self = ZPKProcess::executablePath("self").value_or("/proc/self/exe");
    const ZPKResult<ZPKRunFile> runFile = ZPKRunFile::open(self);
    if (!runFile) {
        return runFile.failure();
    }
    const std::optional<std::string> temporaryFolder = ZPKStandardFolders::temporaryFolder();
    if (!temporaryFolder) {
        return {self, ZPKStandardFolders::reasonForNoTemporaryFolder()};
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

/// Not through a stream of the library, whose locales would be half of this program.
void tell(const std::string& message) {
    static_cast<void>(ZPKDescriptorIO::writeWhole(STDERR_FILENO, "Zephyrkit: " + message + "\n"));
    zpk_run::ErrorWindow::show("Zephyrkit", message);
}

}  // namespace

/// What the library does with an exception that nobody catches. Its own way tells the exception's name first,
/// and what it takes to read that out of the symbol would be a twentieth of this program. The library looks
/// for it under this name.
// NOLINTBEGIN(bugprone-reserved-identifier, readability-identifier-naming)
namespace __cxxabiv1 {
std::terminate_handler __terminate_handler = std::abort;
}  // namespace __cxxabiv1
// NOLINTEND(bugprone-reserved-identifier, readability-identifier-naming)

/// The program at the beginning of a run file. Arguments are the launcher's.
int main(int, char** argv) {
    fillPlacesOfStreams();
    try {
        tell(run(argv).message());
    } catch (const std::exception& error) {
        tell(error.what());
    }
    return EXIT_FAILURE;
}
