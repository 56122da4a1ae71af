// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <libudev.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Platform/ZPKMountTable.h"

/// A block device as udev knows it. A value with a library context of its own; one thread uses one
/// device.
class ZPKBlockDevice {
public:
    /// The device of a name as in /dev (`sr0`), a link there included; nothing when there is none.
    static std::optional<ZPKBlockDevice> withName(const std::string& name);

    /// The device behind a mounted file system; nothing for one without a block device.
    static std::optional<ZPKBlockDevice> ofMount(const ZPKMount& mount);

    /// The devices whose udev property `property` has the value `value`, in the order of their paths
    /// in sysfs.
    static std::vector<ZPKBlockDevice> withProperty(const std::string& property, const std::string& value);

    /// The kernel's name of the device: `sr0`, `sdb1`.
    std::string name() const;

    /// True when the udev property is "1".
    bool isMarked(const std::string& property) const;

    /// True when the drive takes media that can be removed, as the kernel sees it.
    bool hasRemovableMedium() const;

    /// True when the device itself is on a port from which it can be unplugged.
    bool isPluggable() const;

private:
    struct DeviceRelease {
        void operator()(udev_device* device) const { udev_device_unref(device); }
    };
    using Device = std::unique_ptr<udev_device, DeviceRelease>;

    explicit ZPKBlockDevice(Device device) : m_device(std::move(device)) {}
    static std::optional<ZPKBlockDevice> adopt(udev_device* device);
    static std::optional<ZPKBlockDevice> withNode(const std::string& path);

    Device m_device;
};
