// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Platform/ZPKStandardFolders.h"

#include <pwd.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cstdlib>
#include <vector>

#include "Base/ZPKPath.h"
#include "Platform/ZPKFileManager.h"

namespace {

constexpr mode_t kWritableByOthers = S_IWGRP | S_IWOTH;
constexpr mode_t kPermissionBits = S_IRWXU | S_IRWXG | S_IRWXO;

std::string withoutTrailingSeparators(const std::string& path) {
    const std::size_t last = path.find_last_not_of('/');
    return last == std::string::npos ? path.substr(0, 1) : path.substr(0, last + 1);
}

/// An environment variable that holds an absolute path; nothing when it is unset or holds none.
std::optional<std::string> absolutePathFromEnvironment(const char* variable) {
    const char* const value = std::getenv(variable);
    if (value == nullptr || value[0] != '/') {
        return std::nullopt;
    }
    return withoutTrailingSeparators(value);
}

bool isMountedWithoutExecution(const std::string& folder) {
    struct statvfs fileSystem;
    return ::statvfs(folder.c_str(), &fileSystem) == 0 && (fileSystem.f_flag & ST_NOEXEC) != 0;
}

bool belongsToUserAlone(const struct stat& attributes) {
    return S_ISDIR(attributes.st_mode) && attributes.st_uid == ::geteuid() &&
           (attributes.st_mode & kWritableByOthers) == 0;
}

/// The user's own folder inside one that others may write to. It may have been put there by
/// somebody else beforehand, so what counts is what is there afterwards.
std::optional<std::string> privateFolderInside(const std::string& folder) {
    const std::string path = ZPKPath::join(folder, "com.varno.zephyrkit-" + std::to_string(::geteuid()));
    static_cast<void>(::mkdir(path.c_str(), S_IRWXU));
    struct stat attributes;
    if (::lstat(path.c_str(), &attributes) != 0 || !belongsToUserAlone(attributes) ||
        (attributes.st_mode & kPermissionBits) != S_IRWXU) {
        return std::nullopt;
    }
    return path;
}

std::optional<std::string> safeFolder(const std::string& folder) {
    struct stat attributes;
    if (::stat(folder.c_str(), &attributes) != 0 || !S_ISDIR(attributes.st_mode)) {
        return std::nullopt;
    }
    return belongsToUserAlone(attributes) ? std::optional(folder) : privateFolderInside(folder);
}

std::optional<std::string> cacheFolder() {
    std::optional<std::string> folder = absolutePathFromEnvironment("XDG_CACHE_HOME");
    if (!folder) {
        const std::string home = ZPKStandardFolders::homeFolder();
        if (home.empty()) {
            return std::nullopt;
        }
        folder = ZPKPath::join(home, ".cache");
    }
    ZPKFileManager::createFolderWithIntermediateFolders(*folder, S_IRWXU).ignore();
    return folder;
}

std::string sharedTemporaryFolder() {
    const std::optional<std::string> named = absolutePathFromEnvironment("TMPDIR");
    return named && ZPKFileManager::isFolder(*named) ? *named : "/tmp";
}

std::string homeFolderInUserDatabase() {
    std::vector<char> buffer(16'384);
    struct passwd entry;
    struct passwd* found = nullptr;
    const int error = ::getpwuid_r(::geteuid(), &entry, buffer.data(), buffer.size(), &found);
    return error == 0 && found != nullptr && found->pw_dir != nullptr ? found->pw_dir : "";
}

}  // namespace

std::optional<std::string> ZPKStandardFolders::localLibraryFolder() {
    const char* const value = std::getenv("XDG_DATA_DIRS");
    if (value == nullptr || value[0] == '\0') {
        return "/usr/local/share";
    }
    std::string list = value;
    list += ':';
    for (std::size_t start = 0; start < list.size();) {
        const std::size_t end = list.find(':', start);
        if (list[start] == '/') {
            return withoutTrailingSeparators(list.substr(start, end - start));
        }
        start = end + 1;
    }
    return std::nullopt;
}

std::optional<std::string> ZPKStandardFolders::localApplicationSupportFolder() {
    const std::optional<std::string> library = localLibraryFolder();
    if (!library) {
        return std::nullopt;
    }
    return ZPKPath::join(*library, "Application Support");
}

std::string ZPKStandardFolders::usersFolder() {
    return "/home";
}

std::string ZPKStandardFolders::homeFolder() {
    const std::optional<std::string> home = absolutePathFromEnvironment("HOME");
    return home ? *home : homeFolderInUserDatabase();
}

std::optional<std::string> ZPKStandardFolders::temporaryFolder() {
    const std::string shared = sharedTemporaryFolder();
    if (!isMountedWithoutExecution(shared)) {
        return safeFolder(shared);
    }
    // The setup program is started from inside the temporary folder.
    const std::optional<std::string> cache = cacheFolder();
    if (!cache || isMountedWithoutExecution(*cache)) {
        return std::nullopt;
    }
    return safeFolder(*cache);
}
