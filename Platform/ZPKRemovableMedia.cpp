// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Platform/ZPKRemovableMedia.h"

#include <optional>

#include "Platform/ZPKBlockDevice.h"
#include "Platform/ZPKMountTable.h"

std::vector<std::string> ZPKRemovableMedia::mountPoints() {
    return mountPoints(ZPKMountTable::current());
}

std::vector<std::string> ZPKRemovableMedia::mountPoints(const ZPKMountTable& table) {
    std::vector<std::string> paths;
    for (const ZPKMount& mount : table.mounts()) {
        const std::optional<ZPKBlockDevice> device = ZPKBlockDevice::ofMount(mount);
        if (device &&
            (device->hasRemovableMedium() || device->isMarked("ID_CDROM") || device->isPluggable())) {
            paths.push_back(mount.target);
        }
    }
    return paths;
}
