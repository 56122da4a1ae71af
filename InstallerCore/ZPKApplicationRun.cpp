// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "InstallerCore/ZPKApplicationRun.h"

#include <csignal>
#include <cstdlib>
#include <exception>

#include "Base/ZPKDiagnostic.h"
#include "InstallerCore/ZPKCore.h"
#include "Platform/ZPKEndSignals.h"
#include "UserInterface/ZPKFrontEnd.h"

namespace {

/// The run in progress, for an exit that does not come from it.
ZPKCore* g_runningCore = nullptr;

/// Tells of the run for a stretch of code.
class RunInProgress {
public:
    explicit RunInProgress(ZPKCore& core) { g_runningCore = &core; }
    ~RunInProgress() { g_runningCore = nullptr; }
    RunInProgress(const RunInProgress&) = delete;
    RunInProgress& operator=(const RunInProgress&) = delete;
};

/// Exit functions run last to first. This one is registered when the toolkit is there, and so it runs
/// before the toolkit takes itself apart: until then the unpacking may call it.
void cutShortAtExit() {
    if (g_runningCore != nullptr) {
        g_runningCore->cutShort();
    }
}

void registerOnce() {
    [[maybe_unused]] static const bool kIsRegistered =
        std::atexit(cutShortAtExit) == 0 && std::at_quick_exit(cutShortAtExit) == 0;
}

/// Lets go the thread that tells of signals, which may be waiting for the main thread.
class CloseAtEnd {
public:
    explicit CloseAtEnd(ZPKFrontEnd& frontEnd) : m_frontEnd(frontEnd) {}
    ~CloseAtEnd() { m_frontEnd.closeToOtherThreads(); }
    CloseAtEnd(const CloseAtEnd&) = delete;
    CloseAtEnd& operator=(const CloseAtEnd&) = delete;

private:
    ZPKFrontEnd& m_frontEnd;
};

int runUntilAskedToEnd(ZPKFrontEnd& frontEnd, ZPKCore& core) {
    const ZPKEndSignals signals([&](int signal) {
        // Ctrl-C at a question is an answer, and the run ends as it does with that one.
        if (signal == SIGINT && frontEnd.cancelQuestion()) {
            return;
        }
        if (core.askForEnd(signal)) {
            frontEnd.performOnMainThreadAndWait([&frontEnd] { frontEnd.terminate(); });
        }
    });
    const CloseAtEnd closed(frontEnd);
    return frontEnd.run(core);
}

}  // namespace

int ZPKApplicationRun::run(ZPKFrontEnd& frontEnd, const ZPKRemovableVolumes& volumes, ZPKClock& clock) {
    registerOnce();
    try {
        ZPKCore core(frontEnd, volumes, clock);
        const RunInProgress mark(core);
        const int status = runUntilAskedToEnd(frontEnd, core);
        const int ownStatus = core.exitStatus();
        return ownStatus != EXIT_SUCCESS ? ownStatus : status;
    } catch (const std::exception& error) {
        ZPKDiagnostic::tell({error.what()});
        return EXIT_FAILURE;
    }
}
