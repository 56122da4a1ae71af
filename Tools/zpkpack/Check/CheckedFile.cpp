// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/Check/CheckedFile.h"

#include <sys/stat.h>

#include "Platform/ZPKFileHandle.h"
#include "Tools/zpkpack/Check/SourceText.h"

namespace zpk_packager {

std::optional<std::string> CheckedFile::read(const std::string& path, FindingList& findings) {
    if (!isThere(path)) {
        return std::nullopt;
    }
    const ZPKResult<ZPKFileHandle> file = ZPKFileHandle::forReadingAtPath(path);
    if (!file) {
        findings.add("unreadable", path, "it cannot be read: " + file.failure().reason());
        return std::nullopt;
    }
    if (file->size() > SourceText::kLargestFile) {
        findings.add("too-large", path, "it is larger than 1 MiB, so it was not looked at");
        return std::nullopt;
    }
    ZPKResult<std::string> bytes = file->contents(SourceText::kLargestFile);
    if (!bytes) {
        findings.add("unreadable", path, "it cannot be read: " + bytes.failure().reason());
        return std::nullopt;
    }
    return std::move(*bytes);
}

bool CheckedFile::isThere(const std::string& path) {
    struct stat attributes;
    return ::lstat(path.c_str(), &attributes) == 0;
}

}  // namespace zpk_packager
