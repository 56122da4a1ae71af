// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include <dlfcn.h>

#include <csignal>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <memory>

#include "InstallerCore/ZPKCore.h"
#include "Platform/ZPKBundle.h"
#include "Platform/ZPKMainBundle.h"
#include "UserInterface/Terminal/ZPKTerminalFrontEnd.h"
#include "UserInterface/ZPKDesktopPlugIn.h"
#include "UserInterface/ZPKRemovableVolumes.h"

namespace {

/// The run in progress, for an exit that does not come from it.
ZPKCore* g_runningCore = nullptr;

void cleanUpAtExit() {
    if (g_runningCore != nullptr) {
        g_runningCore->removeStagingFolderInUse();
    }
}

int runApplication(ZPKFrontEnd& frontEnd) {
    try {
        const ZPKRemovableVolumes volumes;
        ZPKCore core(frontEnd, volumes);
        g_runningCore = &core;
        const int status = frontEnd.run(core);
        g_runningCore = nullptr;
        return status;
    } catch (const std::exception& error) {
        g_runningCore = nullptr;
        std::cerr << "Zephyrkit: " << error.what() << "\n";
        return EXIT_FAILURE;
    }
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
    // Whoever reads the launcher's words may go away; the run must not end halfway for that.
    std::signal(SIGPIPE, SIG_IGN);
    std::atexit(cleanUpAtExit);
    const std::unique_ptr<ZPKFrontEnd> desktop = openDesktop(argc, argv);
    return desktop ? runApplication(*desktop) : runOnTerminal();
}
