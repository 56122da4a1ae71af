// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Platform/ZPKBlockDevice.h"

#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <algorithm>

#include "Platform/ZPKKernelFile.h"

namespace {

std::string textOfNumber(dev_t number) {
    return std::to_string(major(number)) + ":" + std::to_string(minor(number));
}

/// What the device manager has found out beyond the kernel's words. The folder and the form are those
/// that udev has kept since 2012; there is no other way to them without its library.
void addRecordOfNumber(dev_t number, ZPKKernelDevice::Properties& outProperties) {
    if (const auto record = ZPKKernelFile::contents("/run/udev/data/b" + textOfNumber(number))) {
        ZPKBlockDevice::addRecord(*record, outProperties);
    }
}

}  // namespace

ZPKBlockDevice::ZPKBlockDevice(ZPKKernelDevice device, ZPKKernelDevice::Properties properties)
    : m_device(std::move(device)), m_properties(std::move(properties)) {}

std::optional<ZPKBlockDevice> ZPKBlockDevice::atPath(const std::string& path) {
    std::optional<ZPKKernelDevice> device = ZPKKernelDevice::atPath(path);
    if (!device || device->subsystem() != "block") {
        return std::nullopt;
    }
    ZPKKernelDevice::Properties properties = device->properties();
    if (const std::optional<dev_t> number = device->number()) {
        addRecordOfNumber(*number, properties);
    }
    return ZPKBlockDevice(std::move(*device), std::move(properties));
}

std::optional<ZPKBlockDevice> ZPKBlockDevice::withNumber(dev_t number) {
    return atPath("/sys/dev/block/" + textOfNumber(number));
}

std::optional<ZPKBlockDevice> ZPKBlockDevice::withNode(const std::string& path) {
    struct stat attributes;
    if (::stat(path.c_str(), &attributes) != 0 || !S_ISBLK(attributes.st_mode)) {
        return std::nullopt;
    }
    return withNumber(attributes.st_rdev);
}

std::optional<ZPKBlockDevice> ZPKBlockDevice::withName(const std::string& name) {
    if (name.empty() || name == "." || name == ".." || name.find('/') != std::string::npos) {
        return std::nullopt;
    }
    if (std::optional<ZPKBlockDevice> device = atPath("/sys/class/block/" + name)) {
        return device;
    }
    return withNode("/dev/" + name);
}

std::optional<ZPKBlockDevice> ZPKBlockDevice::ofMount(const ZPKMount& mount) {
    if (major(mount.device) != 0) {
        return withNumber(mount.device);
    }
    // Some file systems number their volumes themselves; their source still names the device.
    return mount.source.starts_with("/dev/") ? withNode(mount.source) : std::nullopt;
}

std::vector<ZPKBlockDevice> ZPKBlockDevice::withProperty(const std::string& property,
                                                         const std::string& value) {
    std::vector<ZPKBlockDevice> devices;
    for (const std::string& name : ZPKKernelFile::namesInFolder("/sys/class/block")) {
        std::optional<ZPKBlockDevice> device = atPath("/sys/class/block/" + name);
        if (device && device->hasProperty(property, value)) {
            devices.push_back(std::move(*device));
        }
    }
    const auto path = [](const ZPKBlockDevice& device) { return device.m_device.path(); };
    std::ranges::sort(devices, {}, path);
    return devices;
}

bool ZPKBlockDevice::hasProperty(const std::string& property, std::string_view value) const {
    const auto found = m_properties.find(property);
    return found != m_properties.end() && found->second == value;
}

bool ZPKBlockDevice::hasRemovableMedium() const {
    if (m_device.type() != "partition") {
        return m_device.attribute("removable") == "1";
    }
    const std::optional<ZPKKernelDevice> drive = m_device.parent("block", "disk");
    return drive && drive->attribute("removable") == "1";
}

bool ZPKBlockDevice::isPluggable() const {
    const std::optional<ZPKKernelDevice> port = m_device.parent("usb", "usb_device");
    return port && port->attribute("removable") == "removable";
}

void ZPKBlockDevice::addRecord(std::string_view record, ZPKKernelDevice::Properties& outProperties) {
    for (const std::string_view line : ZPKKernelFile::split(record, '\n')) {
        if (line.starts_with("E:")) {
            ZPKKernelDevice::addLines(line.substr(2), outProperties);
        }
    }
}
