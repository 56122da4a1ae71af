// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/ZPKMediaUtils.h"

#include "Base/ZPKPath.h"
#include "Platform/ZPKOpticalDevices.h"

bool ZPKMediaUtils::isCDMediaAtPath(const std::string& path) {
    const std::optional<std::string> name = bsdNameAtPath(path);
    if (!name) {
        return false;
    }
    const std::optional<ZPKOpticalDevices::MediaType> type = ZPKOpticalDevices::mediaTypeOfDevice(*name);
    if (type == ZPKOpticalDevices::MediaType::CDROM || type == ZPKOpticalDevices::MediaType::CDR) {
        return true;
    }
    for (const std::string& device : CDDevices()) {
        if (name->starts_with(device)) {
            return true;
        }
    }
    return false;
}

std::optional<std::string> ZPKMediaUtils::bsdNameAtPath(const std::string& path) {
    const std::optional<std::string> source = ZPKOpticalDevices::mountSourceOfPath(path);
    return source ? std::optional(ZPKPath::lastComponent(*source)) : std::nullopt;
}

std::vector<std::string> ZPKMediaUtils::CDDevices() {
    return ZPKOpticalDevices::ejectableMediaNames();
}
