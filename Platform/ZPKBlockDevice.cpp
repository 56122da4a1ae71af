// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Platform/ZPKBlockDevice.h"

#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <cstring>

namespace {

struct ContextRelease {
    void operator()(udev* context) const { udev_unref(context); }
};
struct EnumerationRelease {
    void operator()(udev_enumerate* enumeration) const { udev_enumerate_unref(enumeration); }
};

/// Devices keep the context that they were made with.
std::unique_ptr<udev, ContextRelease> newContext() {
    return std::unique_ptr<udev, ContextRelease>(udev_new());
}

bool isText(const char* value, const char* expected) {
    return value != nullptr && std::strcmp(value, expected) == 0;
}

}  // namespace

std::optional<ZPKBlockDevice> ZPKBlockDevice::adopt(udev_device* device) {
    if (device == nullptr) {
        return std::nullopt;
    }
    return ZPKBlockDevice(Device(device));
}

std::optional<ZPKBlockDevice> ZPKBlockDevice::withNode(const std::string& path) {
    struct stat attributes;
    if (::stat(path.c_str(), &attributes) != 0 || !S_ISBLK(attributes.st_mode)) {
        return std::nullopt;
    }
    return adopt(udev_device_new_from_devnum(newContext().get(), 'b', attributes.st_rdev));
}

std::optional<ZPKBlockDevice> ZPKBlockDevice::withName(const std::string& name) {
    if (name.empty() || name == "." || name == ".." || name.find('/') != std::string::npos) {
        return std::nullopt;
    }
    if (std::optional<ZPKBlockDevice> device =
            adopt(udev_device_new_from_subsystem_sysname(newContext().get(), "block", name.c_str()))) {
        return device;
    }
    return withNode("/dev/" + name);
}

std::optional<ZPKBlockDevice> ZPKBlockDevice::ofMount(const ZPKMount& mount) {
    if (major(mount.device) != 0) {
        return adopt(udev_device_new_from_devnum(newContext().get(), 'b', mount.device));
    }
    // Some file systems number their volumes themselves; their source still names the device.
    return mount.source.starts_with("/dev/") ? withNode(mount.source) : std::nullopt;
}

std::vector<ZPKBlockDevice> ZPKBlockDevice::withProperty(const std::string& property,
                                                         const std::string& value) {
    std::vector<ZPKBlockDevice> devices;
    const auto context = newContext();
    const std::unique_ptr<udev_enumerate, EnumerationRelease> enumeration(udev_enumerate_new(context.get()));
    if (!enumeration || udev_enumerate_add_match_subsystem(enumeration.get(), "block") < 0 ||
        udev_enumerate_add_match_property(enumeration.get(), property.c_str(), value.c_str()) < 0 ||
        udev_enumerate_scan_devices(enumeration.get()) < 0) {
        return devices;
    }
    for (udev_list_entry* entry = udev_enumerate_get_list_entry(enumeration.get()); entry != nullptr;
         entry = udev_list_entry_get_next(entry)) {
        const char* const path = udev_list_entry_get_name(entry);
        if (std::optional<ZPKBlockDevice> device = adopt(udev_device_new_from_syspath(context.get(), path))) {
            devices.push_back(std::move(*device));
        }
    }
    return devices;
}

std::string ZPKBlockDevice::name() const {
    const char* const name = udev_device_get_sysname(m_device.get());
    return name == nullptr ? "" : name;
}

bool ZPKBlockDevice::isMarked(const std::string& property) const {
    return isText(udev_device_get_property_value(m_device.get(), property.c_str()), "1");
}

bool ZPKBlockDevice::hasRemovableMedium() const {
    udev_device* drive = m_device.get();
    if (isText(udev_device_get_devtype(drive), "partition")) {
        drive = udev_device_get_parent_with_subsystem_devtype(drive, "block", "disk");
    }
    return drive != nullptr && isText(udev_device_get_sysattr_value(drive, "removable"), "1");
}

bool ZPKBlockDevice::isPluggable() const {
    udev_device* const port =
        udev_device_get_parent_with_subsystem_devtype(m_device.get(), "usb", "usb_device");
    return port != nullptr && isText(udev_device_get_sysattr_value(port, "removable"), "removable");
}
