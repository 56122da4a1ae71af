// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "InstallerCore/ZPKSetupProgramRunner.h"

#include <iostream>

#include "Base/ZPKFailure.h"
#include "Platform/ZPKTask.h"

void ZPKSetupProgramRunner::run(const ZPKSetupProgram& program, bool synchronous) {
    if (!program.path) {
        return;
    }
    ZPKTask task;
    task.setLaunchPath(*program.path);
    if (program.parameters) {
        task.setArguments(*program.parameters);
    }
    if (const ZPKOutcome outcome = task.launch(); !outcome) {
        std::cerr << "Zephyrkit: cannot start " << outcome.failure().message() << "\n";
        return;
    }
    if (synchronous) {
        task.waitUntilExit();
    }
}
