// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Platform/ZPKRunningApplications.h"

#include <unistd.h>

#include <optional>

#include "Platform/ZPKBundle.h"
#include "Platform/ZPKProcess.h"

std::vector<ZPKRunningApplication> ZPKRunningApplications::current() {
    std::vector<ZPKRunningApplication> applications;
    for (const pid_t identifier : ZPKProcess::identifiers()) {
        const std::optional<std::string> program = ZPKProcess::executablePath(std::to_string(identifier));
        // To tell whose a process is takes the kernel longer than which program it runs, and few run one of a
        // bundle.
        if (!program || program->find("/Contents/") == std::string::npos) {
            continue;
        }
        // Another user's may carry any name, and must not keep this one from running anything.
        if (ZPKProcess::effectiveUser(identifier) != ::geteuid()) {
            continue;
        }
        if (const std::optional<ZPKBundle> bundle = ZPKBundle::bundleOfProgram(*program)) {
            applications.push_back({bundle->localizedName(), identifier});
        }
    }
    return applications;
}
