// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Platform/ZPKItemPlace.h"

#include <fcntl.h>

#include <cerrno>

#include "Platform/ZPKHeldFolder.h"

ZPKResult<ZPKItemPlace> ZPKItemPlace::ofPath(const std::string& path) {
    std::string name = ZPKPath::lastComponent(path);
    if (name.empty() || name == "/" || name == "." || name == "..") {
        return ZPKFailure(path, "Names no item of a folder");
    }
    const std::string parent = ZPKPath::parent(path);
    if (const ZPKHeldFolder* const held = ZPKHeldFolder::at(parent)) {
        return ZPKItemPlace(path, {}, held->descriptor(), std::move(name));
    }
    const ZPKHeldFolder::Place place = ZPKHeldFolder::placeOf(parent);
    ZPKFileDescriptor folder(::openat(place.folder, place.name, O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!folder.isOpen()) {
        return ZPKFailure::ofSystem(path, errno);
    }
    return ZPKItemPlace(path, std::move(folder), -1, std::move(name));
}
