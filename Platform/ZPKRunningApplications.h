// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

/// An application that runs now.
struct ZPKRunningApplication {
    std::string localizedName;
    pid_t processIdentifier = 0;
};

/// Which applications this user runs. May be called from any thread.
class ZPKRunningApplications {
public:
    ZPKRunningApplications() = delete;

    /// This user's processes whose executable lies in a bundle folder's `Contents` (a helper tool's does not
    /// count), this process included, by ascending process identifier. What may not be inspected is
    /// left out.
    static std::vector<ZPKRunningApplication> current();
};
