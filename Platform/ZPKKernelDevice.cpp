// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Platform/ZPKKernelDevice.h"

#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <limits>

#include "Base/ZPKPath.h"
#include "Platform/ZPKKernelFile.h"

namespace {

const std::string kDevices = "/sys/devices";

std::optional<unsigned int> wholeNumber(std::string_view text) {
    unsigned int number = 0;
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isWhole = error == std::errc() && stop == text.data() + text.size();
    return isWhole ? std::optional(number) : std::nullopt;
}

}  // namespace

ZPKKernelDevice::ZPKKernelDevice(std::string path, Properties properties)
    : m_path(std::move(path)), m_properties(std::move(properties)) {}

std::optional<ZPKKernelDevice> ZPKKernelDevice::atPath(const std::string& path) {
    std::string folder = ZPKPath::resolved(path);
    if (folder.size() <= kDevices.size() || !ZPKPath::isSameOrInside(folder, kDevices)) {
        return std::nullopt;
    }
    // Every device has one; other folders lie between them.
    const std::optional<std::string> events = ZPKKernelFile::contents(folder + "/uevent");
    if (!events) {
        return std::nullopt;
    }
    Properties properties;
    addLines(*events, properties);
    return ZPKKernelDevice(std::move(folder), std::move(properties));
}

std::string ZPKKernelDevice::name() const {
    // A name cannot hold the separator of paths, so the kernel writes another character for it.
    std::string name = ZPKPath::lastComponent(m_path);
    std::replace(name.begin(), name.end(), '!', '/');
    return name;
}

std::string ZPKKernelDevice::subsystem() const {
    const std::string folder = ZPKPath::resolved(m_path + "/subsystem");
    return folder.empty() ? folder : ZPKPath::lastComponent(folder);
}

std::string ZPKKernelDevice::type() const {
    const auto found = m_properties.find("DEVTYPE");
    return found == m_properties.end() ? std::string() : found->second;
}

std::optional<std::string> ZPKKernelDevice::attribute(const std::string& name) const {
    std::optional<std::string> value = ZPKKernelFile::contents(m_path + "/" + name);
    if (value) {
        value->resize(value->find_last_not_of("\r\n") + 1);
    }
    return value;
}

std::optional<dev_t> ZPKKernelDevice::number() const {
    const std::optional<std::string> text = attribute("dev");
    return text ? numberOfText(*text) : std::nullopt;
}

std::optional<ZPKKernelDevice> ZPKKernelDevice::parent(std::string_view subsystem,
                                                       std::string_view type) const {
    for (std::string folder = ZPKPath::parent(m_path); folder.size() > kDevices.size();
         folder = ZPKPath::parent(folder)) {
        std::optional<ZPKKernelDevice> device = atPath(folder);
        if (device && device->subsystem() == subsystem && device->type() == type) {
            return device;
        }
    }
    return std::nullopt;
}

std::optional<dev_t> ZPKKernelDevice::numberOfText(std::string_view text) {
    const std::size_t colon = text.find(':');
    if (colon == std::string_view::npos) {
        return std::nullopt;
    }
    const std::optional<unsigned int> major = wholeNumber(text.substr(0, colon));
    const std::optional<unsigned int> minor = wholeNumber(text.substr(colon + 1));
    return major && minor ? std::optional(makedev(*major, *minor)) : std::nullopt;
}

void ZPKKernelDevice::addLines(std::string_view text, Properties& outProperties) {
    for (const std::string_view line : ZPKKernelFile::split(text, '\n')) {
        const std::size_t sign = line.find('=');
        if (sign != std::string_view::npos && sign > 0) {
            outProperties.insert_or_assign(std::string(line.substr(0, sign)),
                                           std::string(line.substr(sign + 1)));
        }
    }
}
