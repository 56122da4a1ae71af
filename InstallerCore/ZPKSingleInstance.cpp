// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "InstallerCore/ZPKSingleInstance.h"

#include <unistd.h>

#include <algorithm>
#include <string>
#include <vector>

#include "Base/ZPKPath.h"
#include "Platform/ZPKBundle.h"
#include "Platform/ZPKMainBundle.h"
#include "Platform/ZPKRunningApplications.h"

namespace {

/// The name that another run of this application carries.
std::string ownName() {
    const ZPKBundle& bundle = ZPKMainBundle::mainBundle();
    const std::optional<std::string> name = bundle.nameInStrings();
    return name ? *name : ZPKPath::extension(bundle.bundleIdentifier());
}

}  // namespace

bool ZPKSingleInstance::isOtherRunning() {
    const std::string name = ownName();
    const pid_t self = ::getpid();
    const std::vector<ZPKRunningApplication> applications = ZPKRunningApplications::current();
    return std::any_of(applications.begin(), applications.end(),
                       [&](const ZPKRunningApplication& application) {
                           return application.localizedName == name && application.processIdentifier != self;
                       });
}
