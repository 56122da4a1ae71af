// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include <dlfcn.h>
#include <sys/auxv.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <optional>
#include <string>

#include "Base/ZPKClock.h"
#include "Base/ZPKDiagnostic.h"
#include "Base/ZPKEnvironment.h"
#include "Base/ZPKFailure.h"
#include "Base/ZPKPath.h"
#include "Base/ZPKTerminalText.h"
#include "Base/ZPKTraceText.h"
#include "InstallerCore/ZPKApplicationRun.h"
#include "InstallerCore/ZPKCrashRescue.h"
#include "InstallerCore/ZPKFreeDescriptors.h"
#include "InstallerCore/ZPKSecondStage.h"
#include "InstallerCore/ZPKToolkitEnvironment.h"
#include "Package/ZPKCarriedParts.h"
#include "Package/ZPKPackageLayout.h"
#include "Platform/ZPKBundle.h"
#include "Platform/ZPKIgnoredSignals.h"
#include "Platform/ZPKLoadableFile.h"
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
    ZPKCrashRescue::end();
    ZPKTerminalFrontEnd frontEnd;
    return runApplication(frontEnd);
}

/// The folder of the parts that this process runs on; empty where these are the machine's.
std::string carriedParts() {
    // A program that was started by handing it to a loader has no loader of its own; the kernel has told so
    // at the start, and nothing need be asked that could be refused.
    const bool isCarried = ::getauxval(AT_BASE) == 0;
    return isCarried ? ZPKMainBundle::mainBundle().frameworksPath() : "";
}

/// The module's entry, or null with a line that says why.
ZPKDesktopEntry openModule(bool isCarried) {
    const std::string path = ZPKMainBundle::mainBundle().plugInPath(kDesktopModuleName);
    if (const ZPKOutcome whole = ZPKLoadableFile::check(path); !whole) {
        ZPKDiagnostic::tell({"no windows: ", whole.failure().message()});
        return nullptr;
    }
    // By a path from this program's own: a dollar sign in a path is a mark to the loader, but not in that.
    // A sanitizer, where there is one, would have it begin elsewhere.
    const std::string name = isCarried ? std::string("$ORIGIN/../PlugIns/") + kDesktopModuleName : path;
    void* module = ::dlopen(name.c_str(), RTLD_NOW | RTLD_LOCAL);
    void* entry = module == nullptr ? nullptr : ::dlsym(module, ZPKDesktopEntryName);
    if (entry == nullptr) {
        const std::string reason = ZPKTerminalText::printable(::dlerror(), ZPKTraceText::kLongest);
        ZPKDiagnostic::tell({"no windows: ", reason});
    }
    return reinterpret_cast<ZPKDesktopEntry>(entry);
}

/// Far more than a run with windows holds at once. The toolkit ends a process that has no more of them.
bool hasDescriptorsForWindows() {
    constexpr std::size_t kEnough = 48;
    if (!ZPKFreeDescriptors::areThere(kEnough)) {
        ZPKDiagnostic::tell({"no windows: ", ZPKFailure::systemReason(errno)});
        return false;
    }
    return true;
}

/// The windows, or null on a machine without a display or without the toolkit.
std::unique_ptr<ZPKFrontEnd> openDesktop(int argc, char** argv) {
    if (!ZPKSecondStage::hasDisplay() || !hasDescriptorsForWindows()) {
        return nullptr;
    }
    const std::string carried = carriedParts();
    if (!carried.empty()) {
        ZPKToolkitEnvironment::set(ZPKCarriedParts(carried));
    }
    const ZPKBundle& bundle = ZPKMainBundle::mainBundle();
    std::optional<ZPKCrashRescue> rescue;
    if (!carried.empty()) {
        rescue.emplace(bundle.executablePath().value_or(""), argc, argv);
    }
    const ZPKDesktopEntry create = openModule(!carried.empty());
    if (create == nullptr) {
        return nullptr;
    }
    return std::unique_ptr<ZPKFrontEnd>(
        create({argc, argv, bundle.resourcePath(), bundle.localizedName(), bundle.bundleIdentifier(),
                ZPKPackageLayout::icon(bundle.resourcePath()), carried, &runOnTerminal}));
}

}  // namespace

int main(int argc, char** argv) {
    if (ZPKSecondStage::isTrial(argc, argv)) {
        return 0;
    }
    // Started through a loader, the process has that one's name, and what was kept from it is due.
    if (argc > 0) {
        ::prctl(PR_SET_NAME, ZPKPath::lastComponent(argv[0]).c_str());
    }
    ZPKSecondStage::restoreLoaderVariables(environ);
    ZPKEnvironment::keepForChildren();
    // Whoever reads the launcher's words may go away; the run must not end halfway for that.
    ZPKIgnoredSignals::ignoreThoseOfWrites();
    const std::unique_ptr<ZPKFrontEnd> desktop = openDesktop(argc, argv);
    return desktop ? runApplication(*desktop) : runOnTerminal();
}
