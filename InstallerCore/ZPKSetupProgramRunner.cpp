// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "InstallerCore/ZPKSetupProgramRunner.h"

#include "Platform/ZPKTask.h"

ZPKOutcome ZPKSetupProgramRunner::run(const ZPKSetupProgram& program, bool synchronous,
                                      const std::vector<std::string>& entries) {
    if (!program.path) {
        return {};
    }
    ZPKTask task;
    task.setLaunchPath(*program.path);
    if (program.parameters) {
        task.setArguments(*program.parameters);
    }
    task.setEnvironmentEntries(entries);
    if (ZPKOutcome outcome = task.launch(); !outcome) {
        return outcome;
    }
    if (synchronous) {
        task.waitUntilExit();
    }
    return {};
}
