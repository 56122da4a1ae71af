// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/TemplateProgram.h"

#include <string_view>

#include "Base/ZPKEnvironment.h"
#include "Base/ZPKPath.h"
#include "Package/ZPKCarriedParts.h"
#include "Platform/ZPKBundle.h"
#include "Platform/ZPKFileManager.h"
#include "Tools/zpkpack/PackagerFailure.h"

namespace zpk_packager {

namespace {

constexpr const char* kTemplate = "Zephyrkit.app";

/// What this machine's loader obeys is not meant for the carried one.
bool isForLoader(std::string_view name) {
    return name.starts_with("LD_") || name == "GLIBC_TUNABLES";
}

}  // namespace

void TemplateProgram::run(ZPKTask& task, const std::string& path, std::vector<std::string> arguments) {
    ZPKEnvironment::remove(isForLoader);
    const ZPKBundle bundle =
        ZPKBundle::bundleWithoutDescription(ZPKPath::join(ZPKPath::parent(path), kTemplate));
    const ZPKCarriedParts parts(bundle.frameworksPath());
    // A build that shares the machine's libraries has a template without parts.
    if (ZPKFileManager::fileExists(parts.loader())) {
        arguments.insert(arguments.begin(), {"--inhibit-cache", path});
        task.setLaunchPath(parts.loader());
    } else {
        task.setLaunchPath(path);
    }
    task.setArguments(arguments);
    task.setEndsWithItsParent();
    require(task.launch());
    task.waitUntilExit();
}

}  // namespace zpk_packager
