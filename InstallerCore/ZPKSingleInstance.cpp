// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "InstallerCore/ZPKSingleInstance.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <iterator>
#include <string>
#include <vector>

#include "Base/ZPKClock.h"
#include "Base/ZPKPath.h"
#include "Platform/ZPKBundle.h"
#include "Platform/ZPKMainBundle.h"
#include "Platform/ZPKRunningApplications.h"

namespace {

constexpr std::chrono::milliseconds kPause(50);
constexpr int kLooksInVain = 40;

/// The name that another run of this application carries.
std::string ownName() {
    const ZPKBundle& bundle = ZPKMainBundle::mainBundle();
    const std::optional<std::string> name = bundle.nameInStrings();
    return name ? *name : ZPKPath::extension(bundle.bundleIdentifier());
}

/// The processes that carry the name, but for this one, in ascending order.
std::vector<pid_t> othersNamed(const std::string& name) {
    std::vector<pid_t> others;
    const pid_t self = ::getpid();
    for (const ZPKRunningApplication& application : ZPKRunningApplications::current()) {
        if (application.localizedName == name && application.processIdentifier != self) {
            others.push_back(application.processIdentifier);
        }
    }
    return others;
}

}  // namespace

bool ZPKSingleInstance::isOtherRunning(ZPKClock& clock, const IsAskedToEnd& isAskedToEnd) {
    const std::string name = ownName();
    const bool isFirst = m_lock.take(name);
    std::vector<pid_t> others = othersNamed(name);
    int looks = 0;
    while (isFirst && !others.empty() && looks < kLooksInVain && !isAskedToEnd()) {
        clock.sleepFor(kPause);
        // Who has come since sees that this one has the lock.
        const std::vector<pid_t> now = othersNamed(name);
        std::vector<pid_t> left;
        std::set_intersection(others.begin(), others.end(), now.begin(), now.end(), std::back_inserter(left));
        looks = left.size() < others.size() ? 0 : looks + 1;
        others = std::move(left);
    }
    return !others.empty();
}
