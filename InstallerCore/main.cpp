// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include <dlfcn.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <cstdlib>
#include <iostream>
#include <memory>

#include "Base/ZPKClock.h"
#include "Base/ZPKPath.h"
#include "InstallerCore/ZPKApplicationRun.h"
#include "InstallerCore/ZPKSecondStage.h"
#include "Platform/ZPKBundle.h"
#include "Platform/ZPKIgnoredSignals.h"
#include "Platform/ZPKMainBundle.h"
#include "UserInterface/Terminal/ZPKTerminalFrontEnd.h"
#include "UserInterface/ZPKDesktopPlugIn.h"
#include "UserInterface/ZPKRemovableVolumes.h"

namespace {

int runApplication(ZPKFrontEnd& frontEnd) {
    const ZPKRemovableVolumes volumes;
    ZPKSystemClock clock;
    return ZPKApplicationRun::run(frontEnd, volumes, clock);
}

int runOnTerminal() {
    ZPKTerminalFrontEnd frontEnd;
    return runApplication(frontEnd);
}

bool isSet(const char* variable) {
    const char* value = std::getenv(variable);
    return value != nullptr && *value != '\0';
}

/// The windows, or null on a machine without a display or without the toolkit.
std::unique_ptr<ZPKFrontEnd> openDesktop(int argc, char** argv) {
    if (!isSet("DISPLAY") && !isSet("WAYLAND_DISPLAY") && !isSet("QT_QPA_PLATFORM")) {
        return nullptr;
    }
    const ZPKBundle& bundle = ZPKMainBundle::mainBundle();
    void* module = dlopen(bundle.plugInPath("ZPKDesktop.so").c_str(), RTLD_NOW | RTLD_LOCAL);
    if (module == nullptr) {
        std::cerr << "Zephyrkit: no windows: " << dlerror() << "\n";
        return nullptr;
    }
    const auto create = reinterpret_cast<ZPKDesktopEntry>(dlsym(module, ZPKDesktopEntryName));
    if (create == nullptr) {
        std::cerr << "Zephyrkit: no windows: " << dlerror() << "\n";
        return nullptr;
    }
    return std::unique_ptr<ZPKFrontEnd>(
        create({argc, argv, bundle.resourcePath(), bundle.localizedName(), &runOnTerminal}));
}

}  // namespace

int main(int argc, char** argv) {
    // Started through a loader, the process has that one's name, and what was kept from it is due.
    if (argc > 0) {
        ::prctl(PR_SET_NAME, ZPKPath::lastComponent(argv[0]).c_str());
    }
    ZPKSecondStage::restoreLoaderVariables(environ);
    // Whoever reads the launcher's words may go away; the run must not end halfway for that.
    ZPKIgnoredSignals::ignoreThoseOfWrites();
    const std::unique_ptr<ZPKFrontEnd> desktop = openDesktop(argc, argv);
    return desktop ? runApplication(*desktop) : runOnTerminal();
}
