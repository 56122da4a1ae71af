// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tests/UserInterface/DesktopModule.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

namespace zpk_test {

std::string deliveredForms() {
    return ZPK_TEST_RESOURCE_FOLDER;
}

ZPKDesktopParameters desktopParameters() {
    static char name[] = "Zephyrkit";
    static char* arguments[] = {name, nullptr};
    ZPKDesktopParameters parameters;
    parameters.argc = 1;
    parameters.argv = arguments;
    parameters.resourceFolder = deliveredForms();
    parameters.displayName = "Zephyrkit";
    return parameters;
}

std::unique_ptr<ZPKFrontEnd> openDesktop(const ZPKDesktopParameters& parameters) {
    void* module = dlopen(ZPK_TEST_DESKTOP_MODULE, RTLD_NOW | RTLD_LOCAL);
    if (module == nullptr) {
        ADD_FAILURE() << dlerror();
        return nullptr;
    }
    const auto entry = reinterpret_cast<ZPKDesktopEntry>(dlsym(module, ZPKDesktopEntryName));
    if (entry == nullptr) {
        ADD_FAILURE() << dlerror();
        return nullptr;
    }
    return std::unique_ptr<ZPKFrontEnd>(entry(parameters));
}

std::unique_ptr<ZPKFrontEnd> openDesktop() {
    std::unique_ptr<ZPKFrontEnd> frontEnd = openDesktop(desktopParameters());
    EXPECT_NE(frontEnd, nullptr);
    return frontEnd;
}

}  // namespace zpk_test
