// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/ZPKKernelDevice.h"
#include "Platform/ZPKMountTable.h"

/// A block device as the kernel and the device manager know it, read from /sys and from the records of
/// the device manager. The properties are those of the moment at which the device was asked for. May be
/// read from any thread.
class ZPKBlockDevice {
public:
    /// The device of a name as in /dev (`sr0`), a link there included; nothing when there is none.
    static std::optional<ZPKBlockDevice> withName(const std::string& name);

    /// The device behind a mounted file system; nothing for one without a block device.
    static std::optional<ZPKBlockDevice> ofMount(const ZPKMount& mount);

    /// The devices whose property `property` has the value `value`, in the order of their paths
    /// in sysfs.
    static std::vector<ZPKBlockDevice> withProperty(const std::string& property, const std::string& value);

    /// The kernel's name of the device: `sr0`, `sdb1`.
    std::string name() const { return m_device.name(); }

    /// True when the property is "1".
    bool isMarked(const std::string& property) const { return hasProperty(property, "1"); }

    /// True when the drive takes media that can be removed, as the kernel sees it.
    bool hasRemovableMedium() const;

    /// True when the device itself is on a port from which it can be unplugged.
    bool isPluggable() const;

    /// Adds what a record of the device manager says of a device's properties; all else in it is passed
    /// over.
    static void addRecord(std::string_view record, ZPKKernelDevice::Properties& outProperties);

private:
    ZPKBlockDevice(ZPKKernelDevice device, ZPKKernelDevice::Properties properties);
    static std::optional<ZPKBlockDevice> atPath(const std::string& path);
    static std::optional<ZPKBlockDevice> withNumber(dev_t number);
    static std::optional<ZPKBlockDevice> withNode(const std::string& path);
    bool hasProperty(const std::string& property, std::string_view value) const;

    ZPKKernelDevice m_device;
    ZPKKernelDevice::Properties m_properties;
};
