// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Platform/ZPKItemPlace.h"

#include <fcntl.h>

#include <cerrno>

ZPKResult<ZPKItemPlace> ZPKItemPlace::ofPath(const std::string& path) {
    std::string name = ZPKPath::lastComponent(path);
    if (name.empty() || name == "/" || name == "." || name == "..") {
        return ZPKFailure(path, "Names no item of a folder");
    }
    ZPKFileDescriptor folder(::open(ZPKPath::parent(path).c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!folder.isOpen()) {
        return ZPKFailure::ofSystem(path, errno);
    }
    return ZPKItemPlace(path, std::move(folder), std::move(name));
}
