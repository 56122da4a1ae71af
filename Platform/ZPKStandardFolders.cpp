// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Platform/ZPKStandardFolders.h"

#include <sys/stat.h>
#include <unistd.h>

#include <string_view>
#include <vector>

#include "Base/ZPKEnvironment.h"
#include "Base/ZPKPath.h"
#include "Base/ZPKRegularFile.h"
#include "Platform/ZPKFileManager.h"
#include "Platform/ZPKKernelFile.h"
#include "Platform/ZPKPrivateFolder.h"

namespace {

constexpr mode_t kWritableByOthers = S_IWGRP | S_IWOTH;

constexpr std::size_t kMostOfUsers = std::size_t{16} << 20;

/// Read from the file itself: the library's look-up would load modules of the machine's, and even its reader
/// brings half of a network along.
std::string homeFolderInUserDatabase() {
    constexpr std::size_t kUser = 2;
    constexpr std::size_t kHome = 5;
    constexpr std::size_t kFields = 7;
    const std::string users = ZPKRegularFile::contents("/etc/passwd", kMostOfUsers).value_or("");
    for (const std::string_view line : ZPKKernelFile::split(users, '\n')) {
        const std::vector<std::string_view> fields = ZPKKernelFile::split(line, ':');
        if (fields.size() == kFields && fields[kUser] == std::to_string(::geteuid())) {
            return std::string(fields[kHome]);
        }
    }
    return {};
}

/// The folder itself where it is the user's alone to write to; a private one inside it where nobody
/// but the user can take that away again; otherwise nothing.
std::optional<std::string> safeFolder(const std::string& folder) {
    struct stat attributes;
    if (::stat(folder.c_str(), &attributes) != 0 || !S_ISDIR(attributes.st_mode)) {
        return std::nullopt;
    }
    const bool isOwn = attributes.st_uid == ::geteuid();
    if (isOwn && (attributes.st_mode & kWritableByOthers) == 0) {
        return folder;
    }
    if ((!isOwn && attributes.st_uid != 0) || (attributes.st_mode & S_ISVTX) == 0) {
        return std::nullopt;
    }
    std::string path = ZPKPath::join(folder, "com.varno.zephyrkit-" + std::to_string(::geteuid()));
    return ZPKPrivateFolder::makeOrFind(path) ? std::optional(std::move(path)) : std::nullopt;
}

std::optional<std::string> usableFolder(const std::string& folder) {
    std::optional<std::string> path = safeFolder(folder);
    // The setup program is started from inside it.
    return path && !ZPKFileManager::isOnFileSystemWithoutExecution(*path) ? path : std::nullopt;
}

/// A folder is made private through its descriptor's name, however the umask and the folder around are set.
bool canMakePrivate() {
    return ZPKFileManager::isFolder("/proc/self/fd");
}

std::string sharedTemporaryFolder() {
    const std::optional<std::string> named = ZPKEnvironment::absolutePath("TMPDIR");
    return named && ZPKFileManager::isFolder(*named) ? *named : "/tmp";
}

/// The user's cache folder, made when it is missing; nothing when nobody knows where it is.
std::optional<std::string> cacheFolder() {
    std::optional<std::string> folder = ZPKEnvironment::absolutePath("XDG_CACHE_HOME");
    if (!folder) {
        const std::string home = ZPKStandardFolders::homeFolder();
        if (home.empty()) {
            return std::nullopt;
        }
        folder = ZPKPath::join(home, ".cache");
    }
    // What is there afterwards is looked at in any case.
    ZPKFileManager::createFolderWithIntermediateFolders(ZPKPath::parent(*folder), S_IRWXU).ignore();
    ZPKPrivateFolder::makeNew(*folder).ignore();
    return folder;
}

}  // namespace

std::optional<std::string> ZPKStandardFolders::localLibraryFolder() {
    const std::optional<std::string> value = ZPKEnvironment::value("XDG_DATA_DIRS");
    if (!value) {
        return "/usr/local/share";
    }
    const std::string list = *value + ':';
    for (std::size_t start = 0; start < list.size();) {
        const std::size_t end = list.find(':', start);
        if (list[start] == '/') {
            return ZPKPath::withoutTrailingSeparators(list.substr(start, end - start));
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
    const std::optional<std::string> home = ZPKEnvironment::absolutePath("HOME");
    return home ? *home : homeFolderInUserDatabase();
}

std::optional<std::string> ZPKStandardFolders::temporaryFolder() {
    if (!canMakePrivate()) {
        return std::nullopt;
    }
    if (std::optional<std::string> folder = usableFolder(sharedTemporaryFolder())) {
        return folder;
    }
    const std::optional<std::string> cache = cacheFolder();
    return cache ? usableFolder(*cache) : std::nullopt;
}

std::string ZPKStandardFolders::reasonForNoTemporaryFolder() {
    return canMakePrivate() ? "No safe folder for temporary files from which programs may run"
                            : "No folder for temporary files can be made private without /proc";
}
