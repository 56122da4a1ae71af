// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/WorkFolder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string_view>
#include <utility>
#include <vector>

#include "Base/ZPKDescriptorIO.h"
#include "Base/ZPKPath.h"
#include "Base/ZPKReplacementFile.h"
#include "Platform/ZPKFileManager.h"
#include "Platform/ZPKPrivateFolder.h"
#include "Tools/zpkpack/PackagerFailure.h"

namespace zpk_packager {

namespace {

constexpr unsigned int kMaximumAttempts = 1000;

constexpr mode_t kPermissions = 07777;

bool isTaken(const std::string& path) {
    struct stat attributes;
    return ::lstat(path.c_str(), &attributes) == 0;
}

ZPKFileDescriptor openFolder(const std::string& path) {
    return ZPKFileDescriptor(ZPKDescriptorIO::retry(
        [&] { return ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC); }));
}

bool lock(int folder) {
    return ZPKDescriptorIO::retry([&] { return ::flock(folder, LOCK_EX | LOCK_NB); }) == 0;
}

/// Whether the open folder still has that name.
bool isAt(const std::string& path, int folder) {
    struct stat named;
    struct stat opened;
    return ::lstat(path.c_str(), &named) == 0 && ::fstat(folder, &opened) == 0 &&
           named.st_dev == opened.st_dev && named.st_ino == opened.st_ino;
}

/// Whether it is like one that this class makes: somebody may have made another of such a name.
bool isLikeOurs(int folder) {
    struct stat attributes;
    return ::fstat(folder, &attributes) == 0 && attributes.st_uid == ::geteuid() &&
           (attributes.st_mode & kPermissions) == S_IRWXU;
}

bool hasNameOfOurs(std::string_view name) {
    const std::string_view prefix = ".zpk-";
    return name.starts_with(prefix) && name.find_first_not_of("0123456789-", prefix.size()) == name.npos;
}

void removeAbandoned(const std::string& folder) {
    std::vector<std::string> names;
    ZPKFileManager::contentsOfFolder(folder, names).ignore();
    for (const std::string& name : names) {
        if (!hasNameOfOurs(name)) {
            continue;
        }
        const std::string path = ZPKPath::join(folder, name);
        const ZPKFileDescriptor opened = openFolder(path);
        if (opened.isOpen() && isLikeOurs(opened.get()) && lock(opened.get()) && isAt(path, opened.get())) {
            ZPKFileManager::removeItem(path).ignore();
        }
    }
}

/// The new folder, locked; nothing open when somebody has taken it for an abandoned one before that.
ZPKFileDescriptor lockNew(const std::string& path) {
    ZPKFileDescriptor opened = openFolder(path);
    // Where the file system knows no locks nobody takes it for abandoned.
    const bool isLocked = opened.isOpen() && (lock(opened.get()) || errno != EWOULDBLOCK);
    return isLocked && isAt(path, opened.get()) ? std::move(opened) : ZPKFileDescriptor();
}

}  // namespace

WorkFolder WorkFolder::beside(const std::string& outputPath) {
    removeAbandoned(ZPKPath::parent(outputPath));
    for (unsigned int attempt = 0;; ++attempt) {
        const std::string path = ZPKReplacementFile::temporaryPathBeside(outputPath, attempt);
        const ZPKOutcome made = ZPKPrivateFolder::makeNew(path);
        if (made) {
            if (ZPKFileDescriptor lock = lockNew(path); lock.isOpen()) {
                return {path, std::move(lock)};
            }
            continue;
        }
        // An earlier process of this number, killed outright, may have left one of the names taken.
        if (!isTaken(path) || attempt == kMaximumAttempts) {
            throw PackagerFailure("cannot make a folder in " + ZPKPath::parent(outputPath),
                                  made.failure().reason());
        }
    }
}

WorkFolder::~WorkFolder() {
    ZPKFileManager::removeItem(m_path).ignore();
}

}  // namespace zpk_packager
