// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

/// What the kernel tells about processes. May be called from any thread.
class ZPKProcess {
public:
    ZPKProcess() = delete;

    /// The processes that there are, by ascending identifier.
    static std::vector<pid_t> identifiers();

    /// The user with whose rights the process runs; nothing when it is gone.
    static std::optional<uid_t> effectiveUser(pid_t process);

    /// Full path of the program file of a process, `process` being its identifier or "self"; also when
    /// the file has been removed or replaced since. Nothing when it may not be asked. The own path is known
    /// without /proc as well, if the file still is where it was started and the working folder is that one.
    static std::optional<std::string> executablePath(const std::string& process);
};
