// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Package/ZPKArchiveTool.h"

#include <cstring>

#include "Package/ZPKPackageLayout.h"
#include "Platform/ZPKHeldFolder.h"
#include "Platform/ZPKMainBundle.h"

namespace {

/// `9 (Killed)`, in English whatever the locale.
std::string signalName(int number) {
    const char* const text = ::sigdescr_np(number);
    return std::to_string(number) + (text != nullptr ? std::string(" (") + text + ")" : "");
}

}  // namespace

ZPKOutcome ZPKArchiveTool::pack(const std::string& folder, const std::string& archive) {
    return run({"-c", "-z", "-rsrc", "--keepParent", folder, archive});
}

ZPKOutcome ZPKArchiveTool::unpack(const std::string& archive, const std::string& folder) {
    if (!ZPKHeldFolder::isToBeFoundAt(folder)) {
        return ZPKFailure(folder, "Is no longer in its place");
    }
    m_task.setStandardErrorToUnreadPipe();
    return run({"-x", "-z", "--rsrc", archive, folder});
}

ZPKOutcome ZPKArchiveTool::run(const std::vector<std::string>& arguments) {
    const std::string tool = ZPKMainBundle::mainBundle().helperPath(ZPKPackageLayout::kArchiveTool);
    m_task.setLaunchPath(tool);
    m_task.setArguments(arguments);
    m_task.setEndsWithItsParent();
    if (ZPKOutcome outcome = m_task.launch(); !outcome) {
        return outcome;
    }
    m_task.waitUntilExit();
    if (const int number = m_task.terminationSignal()) {
        return ZPKFailure(tool, "Ended by signal " + signalName(number));
    }
    const int status = m_task.terminationStatus();
    return status == 0 ? ZPKOutcome() : ZPKFailure(tool, "Ended with status " + std::to_string(status));
}
