// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <vector>

#include "Base/ZPKFailure.h"
#include "Platform/ZPKTask.h"

/// The archive tool among the running bundle's helpers, run as a child process. One thread uses one;
/// `terminate` may be called from another.
class ZPKArchiveTool {
public:
    /// Archives `folder` into the file `archive`, the folder itself being the archive's one top-level
    /// entry. Waits for the tool; its failure names the tool and how it ended.
    ZPKOutcome pack(const std::string& folder, const std::string& archive);

    /// Unpacks `archive` into `folder`. What the tool says on standard error is swallowed. Waits for the
    /// tool; what it could write before a failure stays. The tool finds a folder by its path: one that is
    /// held and no longer in its place is a failure.
    ZPKOutcome unpack(const std::string& archive, const std::string& folder);

    /// Ends the tool at once, and every later run before it begins. Any thread.
    void terminate() { m_task.terminate(); }

private:
    ZPKOutcome run(const std::vector<std::string>& arguments);

    ZPKTask m_task;
};
