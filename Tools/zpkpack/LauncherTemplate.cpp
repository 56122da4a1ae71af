// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/LauncherTemplate.h"

#include <sys/stat.h>

#include <cerrno>
#include <optional>

#include "Base/ZPKPath.h"
#include "Platform/ZPKBundle.h"
#include "Platform/ZPKFileManager.h"
#include "Tools/zpkpack/PackagerFailure.h"

namespace zpk_packager {

namespace {

constexpr mode_t kPermissions = 07777;

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

}  // namespace

void LauncherTemplate::check() const {
    const std::optional<ZPKBundle> bundle = ZPKBundle::bundleWithPath(m_path);
    if (!bundle || !bundle->executablePath()) {
        throw PackagerFailure(m_path + " is no launcher bundle");
    }
}

void LauncherTemplate::copyTo(const std::string& bundle) const {
    // Of a link, what it leads to is meant.
    require(ZPKFileManager::copyItem(ZPKPath::resolved(m_path), bundle));
    for (const char* const folder : {"", "Contents", "Contents/Resources"}) {
        makeWritable(ZPKPath::join(bundle, folder));
    }
}

}  // namespace zpk_packager
