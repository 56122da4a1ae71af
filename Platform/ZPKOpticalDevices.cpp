// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Platform/ZPKOpticalDevices.h"

#include "Platform/ZPKBlockDevice.h"
#include "Platform/ZPKMountTable.h"

namespace {

/// A compact disc of any kind. A DVD or a Blu-ray disc is none: discs are asked for as CDs.
bool holdsCD(const ZPKBlockDevice& device) {
    return device.isMarked("ID_CDROM_MEDIA_CD") || device.isMarked("ID_CDROM_MEDIA_CD_R") ||
           device.isMarked("ID_CDROM_MEDIA_CD_RW");
}

}  // namespace

std::optional<std::string> ZPKOpticalDevices::mountSourceOfPath(const std::string& path) {
    const std::optional<ZPKMount> mount = ZPKMountTable::current().mountOfPath(path);
    return mount ? std::optional(mount->source) : std::nullopt;
}

std::optional<ZPKOpticalDevices::MediaType> ZPKOpticalDevices::mediaTypeOfDevice(const std::string& name) {
    const std::optional<ZPKBlockDevice> device = ZPKBlockDevice::withName(name);
    if (!device || !device->isMarked("ID_CDROM")) {
        return std::nullopt;
    }
    if (device->isMarked("ID_CDROM_MEDIA_CD")) {
        return MediaType::CDROM;
    }
    return device->isMarked("ID_CDROM_MEDIA_CD_R") ? MediaType::CDR : MediaType::Other;
}

std::vector<std::string> ZPKOpticalDevices::ejectableMediaNames() {
    std::vector<std::string> names;
    for (const ZPKBlockDevice& device : ZPKBlockDevice::withProperty("ID_CDROM_MEDIA", "1")) {
        if (holdsCD(device) && device.hasRemovableMedium()) {
            names.push_back(device.name());
        }
    }
    return names;
}
