// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <optional>
#include <string>
#include <vector>

/// Tells whether a mounted volume is an optical disc. May be called from any thread.
class ZPKMediaUtils {
public:
    ZPKMediaUtils() = delete;

    /// True when the volume mounted at `path` lies on a CD-ROM or a CD-R, or when its device's name
    /// begins with that of a device that holds any CD that can be ejected. The latter is a plain
    /// comparison of the first characters: `sr1` also answers for a volume on `sr10`.
    static bool isCDMediaAtPath(const std::string& path);

    /// Name of the device that is mounted at `path`, such as `sr0`; nothing when it cannot be asked.
    static std::optional<std::string> bsdNameAtPath(const std::string& path);

    /// Names of the devices that hold a CD of any kind that can be ejected; a DVD does not count.
    static std::vector<std::string> CDDevices();
};
