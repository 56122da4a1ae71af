// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/LauncherTemplate.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <optional>

#include "Base/ZPKPath.h"
#include "Platform/ZPKBundle.h"
#include "Platform/ZPKFileManager.h"
#include "Tools/zpkpack/PackagerFailure.h"

namespace zpk_packager {

namespace {

constexpr mode_t kPermissions = 07777;
constexpr mode_t kCopiedPermissions = 01777;
constexpr unsigned int kGrowingFolder = 0700;

/// A link in the place of the folder would lead the package's own files out of the copy.
void makeWritable(const std::string& folder) {
    struct stat attributes;
    if (::lstat(folder.c_str(), &attributes) != 0) {
        throw PackagerFailure::ofSystem(folder, errno);
    }
    if (!S_ISDIR(attributes.st_mode)) {
        throw PackagerFailure(folder, "it is no folder");
    }
    if (::chmod(folder.c_str(), (attributes.st_mode & kPermissions) | S_IRWXU) != 0) {
        throw PackagerFailure::ofSystem(folder, errno);
    }
}

void copyPermissions(const std::string& source, const std::string& copy) {
    struct stat attributes;
    if (::lstat(source.c_str(), &attributes) != 0 ||
        ::chmod(copy.c_str(), attributes.st_mode & kCopiedPermissions) != 0) {
        throw PackagerFailure::ofSystem(copy, errno);
    }
}

/// Copies the item at `path` below `from`, but nothing that is left out.
void copyBelow(const std::string& from, const std::string& to, const std::string& path,
               const std::vector<std::string>& leftOut) {
    const auto isOnTheWayTo = [&](const std::string& left) { return ZPKPath::isSameOrInside(left, path); };
    const std::string source = ZPKPath::join(from, path);
    const std::string copy = ZPKPath::join(to, path);
    if (std::find(leftOut.begin(), leftOut.end(), path) != leftOut.end()) {
        return;
    }
    // A link in the place of a folder is copied as one, and refused with the others.
    const bool holdsSome = path.empty() || std::any_of(leftOut.begin(), leftOut.end(), isOnTheWayTo);
    if (!holdsSome || !ZPKFileManager::isFolderNotFollowingLinks(source)) {
        require(ZPKFileManager::copyItem(source, copy));
        return;
    }
    std::vector<std::string> names;
    require(ZPKFileManager::contentsOfFolder(source, names));
    require(ZPKFileManager::createFolderWithIntermediateFolders(copy, kGrowingFolder));
    for (const std::string& name : names) {
        copyBelow(from, to, ZPKPath::join(path, name), leftOut);
    }
    copyPermissions(source, copy);
}

}  // namespace

void LauncherTemplate::check() const {
    const std::optional<ZPKBundle> bundle = ZPKBundle::bundleWithPath(m_path);
    if (!bundle || !bundle->executablePath()) {
        throw PackagerFailure(m_path + " is no launcher bundle");
    }
}

void LauncherTemplate::copyTo(const std::string& bundle, const std::vector<std::string>& leftOut) const {
    // Of a link, what it leads to is meant.
    copyBelow(ZPKPath::resolved(m_path), bundle, "", leftOut);
    for (const char* const folder : {"", "Contents", "Contents/Resources"}) {
        makeWritable(ZPKPath::join(bundle, folder));
    }
}

}  // namespace zpk_packager
