// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

// The launcher as a static program, which starts on any machine: with a display it becomes its second
// stage; without one, or where that cannot be, the run happens on the terminal.

#include <unistd.h>

#include "Base/ZPKClock.h"
#include "Base/ZPKDiagnostic.h"
#include "InstallerCore/ZPKApplicationRun.h"
#include "InstallerCore/ZPKCrashRescue.h"
#include "InstallerCore/ZPKSecondStage.h"
#include "Platform/ZPKBundle.h"
#include "Platform/ZPKIgnoredSignals.h"
#include "Platform/ZPKMainBundle.h"
#include "UserInterface/Terminal/ZPKTerminalFrontEnd.h"
#include "UserInterface/ZPKDesktopPlugIn.h"
#include "UserInterface/ZPKRemovableVolumes.h"

namespace {

/// Comes back only when there are no windows to be had.
void becomeSecondStage(int argc, char** argv) {
    const ZPKBundle& bundle = ZPKMainBundle::mainBundle();
    const ZPKSecondStage stage(bundle.frameworksPath(), bundle.plugInPath(kDesktopModuleName));
    const ZPKOutcome whole = stage.probe();
    const ZPKFailure failure = whole ? stage.start(argc, argv, environ) : whole.failure();
    ZPKDiagnostic::tell({"no windows: ", failure.message()});
}

}  // namespace

int main(int argc, char** argv) {
    if (ZPKSecondStage::hasDisplay() && !ZPKCrashRescue::wasCalled(argc, argv)) {
        becomeSecondStage(argc, argv);
    }
    // Whoever reads the launcher's words may go away; the run must not end halfway for that. The second
    // stage sees to that itself, and finds the signals as they were given.
    ZPKIgnoredSignals::ignoreThoseOfWrites();
    ZPKTerminalFrontEnd frontEnd;
    const ZPKRemovableVolumes volumes;
    ZPKSystemClock clock;
    return ZPKApplicationRun::run(frontEnd, volumes, clock);
}
