// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Platform/ZPKMainBundle.h"

#include <optional>
#include <string>

#include "Base/ZPKPath.h"
#include "Platform/ZPKProcess.h"

namespace {

std::optional<ZPKBundle>& bundleSetByProgram() {
    static std::optional<ZPKBundle> bundle;
    return bundle;
}

ZPKBundle bundleOfThisProgram() {
    const std::string program = ZPKProcess::executablePath("self").value_or("/");
    const std::optional<ZPKBundle> found = ZPKBundle::bundleOfProgram(program);
    return found ? *found : ZPKBundle::bundleWithoutDescription(ZPKPath::parent(program));
}

}  // namespace

const ZPKBundle& ZPKMainBundle::mainBundle() {
    if (bundleSetByProgram()) {
        return *bundleSetByProgram();
    }
    static const ZPKBundle kBundle = bundleOfThisProgram();
    return kBundle;
}

void ZPKMainBundle::setMainBundle(const ZPKBundle& bundle) {
    bundleSetByProgram() = bundle;
}
