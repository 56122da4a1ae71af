// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/run/FolderWatcher.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <ctime>

#include "Base/ZPKFileDescriptor.h"

namespace zpk_run {

namespace {

constexpr int kParentIsGone = SIGUSR1;

/// How often the parent is looked for besides: its signal may have come before it was asked for.
constexpr timespec kPatience{1, 0};

constexpr int kStreams[] = {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO};

void blockAllSignals() {
    sigset_t all;
    ::sigfillset(&all);
    ::sigprocmask(SIG_SETMASK, &all, nullptr);
}

/// Whoever waits for the end of a pipe or of a terminal session must not wait for the watcher.
void letGoOfStreams() {
    const ZPKFileDescriptor nowhere(::open("/dev/null", O_RDWR | O_CLOEXEC));
    for (const int stream : kStreams) {
        if (nowhere.isOpen()) {
            ::dup2(nowhere.get(), stream);
        } else {
            ::close(stream);
        }
    }
}

void waitForTheEndOf(pid_t parent) {
    sigset_t awaited;
    ::sigemptyset(&awaited);
    ::sigaddset(&awaited, kParentIsGone);
    while (::getppid() == parent) {
        ::sigtimedwait(&awaited, nullptr, &kPatience);
    }
}

[[noreturn]] void watch(const RunFolder& folder, pid_t parent) {
    blockAllSignals();
    ::prctl(PR_SET_PDEATHSIG, kParentIsGone);
    ::prctl(PR_SET_NAME, "zephyrkit-watch");
    ::setsid();
    letGoOfStreams();
    static_cast<void>(::chdir("/") == 0);
    waitForTheEndOf(parent);
    // The removal takes three descriptors, and the limit may leave no others.
    for (const int stream : kStreams) {
        ::close(stream);
    }
    folder.remove().ignore();
    ::_exit(0);
}

}  // namespace

ZPKOutcome startFolderWatcher(const RunFolder& folder) {
    const pid_t parent = ::getpid();
    const pid_t child = ::fork();
    if (child < 0) {
        return ZPKFailure::ofSystem(folder.path(), errno);
    }
    if (child == 0) {
        watch(folder, parent);
    }
    return {};
}

}  // namespace zpk_run
