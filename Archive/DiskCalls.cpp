// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/DiskCalls.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "Archive/Failure.h"
#include "Base/ZPKPath.h"

namespace zpk_archive {

namespace {

constexpr int kFolderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
constexpr mode_t kPermissions = 07777;

/// Works on a folder that its owner may not even read, unlike opening it in the usual way.
bool openToOwner(int parent, const char* name, mode_t mode) {
    const ZPKFileDescriptor folder =
        DiskCalls::open(parent, name, O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    const std::string path = "/proc/self/fd/" + std::to_string(folder.get());
    return folder.isOpen() &&
           DiskCalls::succeeds([&] { return ::chmod(path.c_str(), (mode & kPermissions) | S_IRWXU); });
}

}  // namespace

void DiskCalls::throwUnless(bool isGood) {
    if (!isGood) {
        throwWriteFailure(errno);
    }
}

ZPKFileDescriptor DiskCalls::open(int parent, const char* name, int flags, mode_t mode) {
    return ZPKFileDescriptor(ZPKDescriptorIO::retry([&] { return ::openat(parent, name, flags, mode); }));
}

bool DiskCalls::remove(int parent, const char* name, int flags) {
    return succeeds([&] { return ::unlinkat(parent, name, flags); });
}

bool DiskCalls::status(int parent, const char* name, struct stat& status) {
    return succeeds([&] { return ::fstatat(parent, name, &status, AT_SYMLINK_NOFOLLOW); });
}

bool DiskCalls::status(int descriptor, struct stat& status) {
    return succeeds([&] { return ::fstat(descriptor, &status); });
}

DIR* DiskCalls::startListing(ZPKFileDescriptor& folder) {
    DIR* listing = nullptr;
    do {
        listing = folder.isOpen() ? ::fdopendir(folder.get()) : nullptr;
    } while (listing == nullptr && folder.isOpen() && errno == EINTR);
    if (listing != nullptr) {
        static_cast<void>(folder.release());
    }
    return listing;
}

const dirent* DiskCalls::nextIn(DIR* folder) {
    const dirent* item = nullptr;
    do {
        errno = 0;
        item = ::readdir(folder);
    } while (item == nullptr && errno == EINTR);
    return item;
}

std::optional<FileIdentity> DiskCalls::identity(int parent, const char* name) {
    struct stat found {};
    return status(parent, name, found) ? std::optional(FileIdentity(found)) : std::nullopt;
}

bool DiskCalls::isOpenToOwner(int parent, const char* name, const struct stat& status) {
    return (status.st_mode & S_IRWXU) == S_IRWXU || openToOwner(parent, name, status.st_mode);
}

bool DiskCalls::makeFolder(int parent, const char* name, mode_t mode) {
    struct stat made {};
    return succeeds([&] { return ::mkdirat(parent, name, mode); }) && status(parent, name, made) &&
           isOpenToOwner(parent, name, made);
}

bool DiskCalls::makeMissingFolders(const std::string& path) {
    if (makeFolder(AT_FDCWD, path.c_str(), 0777) || errno == EEXIST) {
        return true;
    }
    const std::string parent = ZPKPath::parent(path);
    return errno == ENOENT && parent != path && makeMissingFolders(parent) &&
           makeFolder(AT_FDCWD, path.c_str(), 0777);
}

ZPKFileDescriptor DiskCalls::openFolder(int parent, const char* name, bool makeMissing) {
    ZPKFileDescriptor folder = open(parent, name, kFolderFlags);
    if (!folder.isOpen() && errno == ENOENT && makeMissing) {
        throwUnless(makeFolder(parent, name, 0777));
        folder = open(parent, name, kFolderFlags);
    }
    if (!folder.isOpen() && (errno == ELOOP || errno == ENOTDIR)) {
        throw MemberFailure("a part of its path is no folder");
    }
    throwUnless(folder.isOpen());
    return folder;
}

void DiskCalls::clearPlace(int parent, const char* name) {
    if (remove(parent, name, 0) || errno == ENOENT) {
        return;
    }
    throwUnless(errno == EISDIR || errno == EPERM);
    throwUnless(remove(parent, name, AT_REMOVEDIR));
}

}  // namespace zpk_archive
