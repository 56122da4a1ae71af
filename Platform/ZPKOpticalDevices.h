// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <optional>
#include <string>
#include <vector>

/// The optical drives of this machine and the discs in them, as the kernel and the device manager know them
/// now. May be called from any thread.
class ZPKOpticalDevices {
public:
    ZPKOpticalDevices() = delete;

    enum class MediaType {
        CDROM,
        CDR,
        /// Any other disc, or none.
        Other,
    };

    /// What is mounted where `path` lies (`/dev/sr0`), as the mount table says; nothing when there is
    /// no item at `path`. The last path component is the device's name.
    static std::optional<std::string> mountSourceOfPath(const std::string& path);

    /// The type of the disc in the optical drive `name` (`sr0`); nothing when no optical drive has
    /// that name.
    static std::optional<MediaType> mediaTypeOfDevice(const std::string& name);

    /// Names of the drives that hold a CD of any kind (CD-ROM, CD-R, CD-RW, audio) that can be taken
    /// out, in the order of their paths in sysfs. A DVD does not count.
    static std::vector<std::string> ejectableMediaNames();
};
