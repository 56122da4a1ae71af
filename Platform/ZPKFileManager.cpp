// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Platform/ZPKFileManager.h"

#include <dirent.h>
#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>

#include "Base/ZPKPath.h"
#include "Platform/ZPKFolderWalker.h"
#include "Platform/ZPKItemPlace.h"
#include "Platform/ZPKTreeCopier.h"
#include "Platform/ZPKTreeRemover.h"

namespace {

ZPKOutcome makeOneFolder(const std::string& path, unsigned int mode) {
    const bool isThere = ::mkdir(path.c_str(), mode) == 0 || errno == EEXIST;
    return isThere ? ZPKOutcome() : ZPKFailure::ofSystem(path, errno);
}

/// Goes into the folder at `path`. The trailing separator lets a link to a folder count as the folder.
ZPKOutcome enterFolder(ZPKFolderWalker& walker, const std::string& path) {
    const bool isRead = walker.enterAt(AT_FDCWD, path.empty() ? path : path + "/") && walker.readEntries();
    return isRead ? ZPKOutcome() : ZPKFailure::ofSystem(path, errno);
}

ZPKOutcome removeOnce(const std::string& path) {
    const ZPKResult<ZPKItemPlace> place = ZPKItemPlace::ofPath(path);
    if (place) {
        return ZPKTreeRemover::remove(*place);
    }
    // An empty folder goes without a descriptor, too.
    return ::rmdir(path.c_str()) == 0 ? ZPKOutcome() : place.failure();
}

}  // namespace

bool ZPKFileManager::fileExists(const std::string& path) {
    struct stat attributes;
    return ::stat(path.c_str(), &attributes) == 0;
}

bool ZPKFileManager::isFolder(const std::string& path) {
    struct stat attributes;
    return ::stat(path.c_str(), &attributes) == 0 && S_ISDIR(attributes.st_mode);
}

bool ZPKFileManager::isRegularFile(const std::string& path) {
    struct stat attributes;
    return ::stat(path.c_str(), &attributes) == 0 && S_ISREG(attributes.st_mode);
}

bool ZPKFileManager::isFolderNotFollowingLinks(const std::string& path) {
    struct stat attributes;
    return ::lstat(path.c_str(), &attributes) == 0 && S_ISDIR(attributes.st_mode);
}

bool ZPKFileManager::isExecutableFile(const std::string& path) {
    return ::faccessat(AT_FDCWD, path.c_str(), X_OK, AT_EACCESS) == 0;
}

bool ZPKFileManager::isExecutableRegularFile(const std::string& path) {
    return isRegularFile(path) && isExecutableFile(path);
}

bool ZPKFileManager::isOnFileSystemWithoutExecution(const std::string& path) {
    struct statvfs fileSystem;
    return ::statvfs(path.c_str(), &fileSystem) == 0 && (fileSystem.f_flag & ST_NOEXEC) != 0;
}

ZPKOutcome ZPKFileManager::createFolderWithIntermediateFolders(const std::string& path, unsigned int mode) {
    ZPKOutcome outcome;
    for (std::size_t at = path.find('/', 1); at != std::string::npos; at = path.find('/', at + 1)) {
        const ZPKOutcome parentOutcome = makeOneFolder(path.substr(0, at), mode);
        outcome = outcome ? parentOutcome : outcome;
    }
    const ZPKOutcome lastOutcome = makeOneFolder(path, mode);
    // What is there decides: a parent that may not be made may be there all the same.
    if (isFolder(path)) {
        return {};
    }
    outcome = outcome ? lastOutcome : outcome;
    return outcome ? ZPKFailure::ofSystem(path, ENOTDIR) : outcome;
}

ZPKOutcome ZPKFileManager::removeItem(const std::string& path) {
    ZPKOutcome first = removeOnce(path);
    struct stat attributes;
    if (first || (::lstat(path.c_str(), &attributes) != 0 && errno == ENOENT)) {
        return first;
    }
    // What one failed call has left, a second pass may find removable.
    return removeOnce(path);
}

ZPKOutcome ZPKFileManager::copyItem(const std::string& source, const std::string& destination) {
    const ZPKResult<ZPKItemPlace> from = ZPKItemPlace::ofPath(source);
    if (!from) {
        return from.failure();
    }
    const ZPKResult<ZPKItemPlace> to = ZPKItemPlace::ofPath(destination);
    return to ? ZPKTreeCopier::copy(*from, *to) : to.failure();
}

ZPKOutcome ZPKFileManager::contentsOfFolder(const std::string& folder, std::vector<std::string>& outNames) {
    outNames.clear();
    ZPKFolderWalker walker(ZPKFolderWalker::Access::Plain);
    if (ZPKOutcome outcome = enterFolder(walker, folder); !outcome) {
        return outcome;
    }
    while (const ZPKFolderWalker::Entry* entry = walker.nextEntry()) {
        outNames.push_back(entry->name);
    }
    return {};
}

ZPKOutcome ZPKFileManager::enumerateFolder(const std::string& folder, const ItemVisitor& visitor) {
    ZPKFolderWalker walker(ZPKFolderWalker::Access::Plain);
    ZPKOutcome outcome = enterFolder(walker, folder);
    std::string path;
    std::vector<std::size_t> lengths{0};
    while (walker.isInside()) {
        path.resize(lengths.back());
        const ZPKFolderWalker::Entry* entry = walker.nextEntry();
        if (entry == nullptr) {
            lengths.pop_back();
            walker.leave();
            continue;
        }
        path += entry->name;
        if (path.size() >= PATH_MAX) {
            outcome = outcome ? ZPKFailure::ofSystem(ZPKPath::join(folder, path), ENAMETOOLONG) : outcome;
            continue;
        }
        const bool isFolder = entry->type == DT_DIR;
        visitor(path, isFolder ? ItemKind::Folder : entry->type == DT_LNK ? ItemKind::Link : ItemKind::Other);
        if (!isFolder) {
            continue;
        }
        const bool isEntered = walker.enter(entry->name);
        if (!isEntered || !walker.readEntries()) {
            outcome = outcome ? ZPKFailure::ofSystem(ZPKPath::join(folder, path), errno) : outcome;
        }
        if (isEntered) {
            path += '/';
            lengths.push_back(path.size());
        }
    }
    return outcome;
}

ZPKOutcome ZPKFileManager::subpathsOfFolder(const std::string& folder, std::vector<std::string>& outPaths) {
    outPaths.clear();
    return enumerateFolder(folder,
                           [&outPaths](const std::string& path, ItemKind) { outPaths.push_back(path); });
}
