// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/ZPKRemovableVolumes.h"

#include "Platform/ZPKRemovableMedia.h"
#include "UserInterface/ZPKMediaUtils.h"

std::vector<std::string> ZPKRemovableVolumes::mountedRemovableMedia() const {
    return ZPKRemovableMedia::mountPoints();
}

bool ZPKRemovableVolumes::isCDMediaAtPath(const std::string& path) const {
    return ZPKMediaUtils::isCDMediaAtPath(path);
}
