// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <sys/types.h>
#include <string>
#include <vector>

class ZPKMountTable;

/// An application that runs now.
struct ZPKRunningApplication {
    std::string localizedName;
    pid_t processIdentifier = 0;
};

/// What runs and what is mounted on this machine. Main thread, except where said.
class ZPKWorkspace {
public:
    ZPKWorkspace() = delete;

    /// The processes whose executable lies in a bundle folder's `Contents` (a helper tool's does not
    /// count), this process included, by ascending process identifier. What may not be inspected is
    /// left out.
    static std::vector<ZPKRunningApplication> runningApplications();

    /// Mount points of removable media, in mount order: the device is removable, or its drive takes
    /// removable media. May be called from any thread.
    static std::vector<std::string> mountedRemovableMedia();

    /// The same for a given mount table; for tests.
    static std::vector<std::string> mountedRemovableMedia(const ZPKMountTable& table);

    /// The person's preferred languages, most preferred first, from `LANGUAGE` (a colon list), else
    /// the first set of `LC_ALL`, `LC_MESSAGES`, `LANG`. `LANGUAGE` counts only where the locale is
    /// not `C` or `POSIX`. Each `ll_CC.codeset@modifier` gives `ll_CC`, then `ll`; `zh_CN`, `zh_SG`
    /// and a bare `zh` also give `zh-Hans`; `C` and `POSIX` give nothing, and in a list nothing after
    /// them counts. Without repetitions.
    static std::vector<std::string> preferredLanguages();
};
