// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/TreeSize.h"

#include <sys/stat.h>

#include "Base/ZPKPath.h"
#include "Platform/ZPKFileManager.h"

namespace zpk_packager {

namespace {

std::uint64_t sizeOfFile(const std::string& path) {
    struct stat attributes;
    const bool isFile = ::lstat(path.c_str(), &attributes) == 0 && S_ISREG(attributes.st_mode);
    return isFile ? static_cast<std::uint64_t>(attributes.st_size) : 0;
}

}  // namespace

std::uint64_t TreeSize::of(const std::string& path) {
    std::uint64_t size = sizeOfFile(path);
    ZPKFileManager::enumerateFolder(path, [&](const std::string& below, ZPKFileManager::ItemKind kind) {
        size += kind == ZPKFileManager::ItemKind::Other ? sizeOfFile(ZPKPath::join(path, below)) : 0;
    }).ignore();
    return size;
}

}  // namespace zpk_packager
