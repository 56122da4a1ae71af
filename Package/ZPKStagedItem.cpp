// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Package/ZPKStagedItem.h"

#include <sys/stat.h>

#include <cerrno>

#include "Base/ZPKPath.h"

namespace {

using Standing = ZPKStagedItem::Standing;

/// Whether an item, a link that leads nowhere included, is at `path`. What cannot be told counts as there.
bool isSomethingAt(const std::string& path, struct stat& outAttributes) {
    return ::lstat(path.c_str(), &outAttributes) == 0 || (errno != ENOENT && errno != ENOTDIR);
}

bool isInside(const std::string& resolvedPath, const std::string& resolvedFolder) {
    return !resolvedPath.empty() && ZPKPath::isSameOrInside(resolvedPath, resolvedFolder);
}

}  // namespace

Standing ZPKStagedItem::standing(const std::string& path, const std::string& stagingFolder) {
    struct stat attributes {};
    const std::string place = ZPKPath::resolvedItem(path);
    if (place.empty()) {
        // Its folder is not there at all, or a file, which holds nothing; else a link that leads nowhere
        // stands there, or a folder that may not be entered.
        const bool isThere = isSomethingAt(ZPKPath::parent(path), attributes);
        return isThere && !S_ISREG(attributes.st_mode) ? Standing::Unusable : Standing::Absent;
    }
    const std::string root = ZPKPath::resolved(stagingFolder);
    if (!isInside(place, root)) {
        return Standing::Unusable;
    }
    if (!isSomethingAt(place, attributes)) {
        return Standing::Absent;
    }
    return isInside(ZPKPath::resolved(place), root) ? Standing::Inside : Standing::Unusable;
}
