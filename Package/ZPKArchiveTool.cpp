// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Package/ZPKArchiveTool.h"

#include "Package/ZPKPackageLayout.h"
#include "Platform/ZPKMainBundle.h"

ZPKOutcome ZPKArchiveTool::pack(const std::string& folder, const std::string& archive) {
    return run({"-c", "-z", "-rsrc", "--keepParent", folder, archive});
}

ZPKOutcome ZPKArchiveTool::unpack(const std::string& archive, const std::string& folder) {
    m_task.setStandardErrorToUnreadPipe();
    return run({"-x", "-z", "--rsrc", archive, folder});
}

ZPKOutcome ZPKArchiveTool::run(const std::vector<std::string>& arguments) {
    const std::string tool = ZPKMainBundle::mainBundle().helperPath(ZPKPackageLayout::kArchiveTool);
    m_task.setLaunchPath(tool);
    m_task.setArguments(arguments);
    if (ZPKOutcome outcome = m_task.launch(); !outcome) {
        return outcome;
    }
    m_task.waitUntilExit();
    const int status = m_task.terminationStatus();
    return status == 0 ? ZPKOutcome() : ZPKFailure(tool, "Ended with status " + std::to_string(status));
}
