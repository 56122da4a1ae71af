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
        // Another user's may carry any name, and must not keep this one from running anything.
        if (ZPKProcess::effectiveUser(identifier) != ::geteuid()) {
            continue;
        }
        const std::optional<std::string> program = ZPKProcess::executablePath(std::to_string(identifier));
        const std::optional<ZPKBundle> bundle = program ? ZPKBundle::bundleOfProgram(*program) : std::nullopt;
        if (bundle) {
            applications.push_back({bundle->localizedName(), identifier});
        }
    }
    return applications;
}
