// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Platform/ZPKFileManager.h"

#include <dirent.h>
#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "Base/ZPKPath.h"
#include "Platform/ZPKFolderWalker.h"
#include "Platform/ZPKHeldFolder.h"
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
    const std::string folder = path.empty() ? path : path + "/";
    const ZPKHeldFolder::Place place = ZPKHeldFolder::placeOf(folder);
    const bool isRead = walker.enterAt(place.folder, place.name) && walker.readEntries();
    return isRead ? ZPKOutcome() : ZPKFailure::ofSystem(path, errno);
}

/// What is in the folder goes wherever it is now; it goes itself where it is in its place.
ZPKOutcome removeHeld(const ZPKHeldFolder& folder, const std::string& path) {
    ZPKOutcome emptied = ZPKTreeRemover::removeContents(folder.descriptor(), path);
    if (!folder.isInItsPlace()) {
        return emptied ? ZPKFailure(path, "Is no longer in its place") : emptied;
    }
    // An empty folder goes without a descriptor, too.
    const bool isGone = ::rmdir(path.c_str()) == 0;
    return isGone ? ZPKOutcome() : emptied ? ZPKFailure::ofSystem(path, errno) : emptied;
}

ZPKOutcome removeOnce(const std::string& path) {
    if (const ZPKHeldFolder* const held = ZPKHeldFolder::at(path)) {
        return removeHeld(*held, path);
    }
    const ZPKResult<ZPKItemPlace> place = ZPKItemPlace::ofPath(path);
    if (place) {
        return ZPKTreeRemover::remove(*place);
    }
    // An empty folder goes without a descriptor, too.
    return ::rmdir(path.c_str()) == 0 ? ZPKOutcome() : place.failure();
}

/// One walk through a folder. Of each folder on the way down the names of those below it are kept, and no
/// others.
class FolderEnumeration {
public:
    FolderEnumeration(const std::string& folder, const ZPKFileManager::ItemVisitor& visitor)
        : m_folder(folder), m_visitor(visitor) {}

    ZPKOutcome run();

private:
    struct Level {
        std::size_t pathLength;
        /// To be entered, the next one last.
        std::vector<std::string> folders;
    };

    void visitEntries();
    void visitEntry(const char* name, unsigned char type);
    void fail(int error);

    const std::string& m_folder;
    const ZPKFileManager::ItemVisitor& m_visitor;
    ZPKFolderWalker m_walker{ZPKFolderWalker::Access::Plain};
    /// Of the folder that the walk is in, with a separator at its end.
    std::string m_path;
    std::vector<Level> m_levels;
    ZPKOutcome m_outcome;
};

ZPKOutcome FolderEnumeration::run() {
    // The trailing separator lets a link to a folder count as the folder.
    if (!m_walker.enterAt(AT_FDCWD, m_folder.empty() ? m_folder : m_folder + "/")) {
        return ZPKFailure::ofSystem(m_folder, errno);
    }
    visitEntries();
    while (m_walker.isInside()) {
        std::vector<std::string>& folders = m_levels.back().folders;
        m_path.resize(m_levels.back().pathLength);
        if (folders.empty()) {
            m_levels.pop_back();
            m_walker.leave();
            continue;
        }
        const std::string name = std::move(folders.back());
        folders.pop_back();
        m_path += name;
        if (m_walker.enter(name)) {
            visitEntries();
        } else {
            fail(errno);
        }
    }
    return m_outcome;
}

void FolderEnumeration::visitEntries() {
    if (!m_path.empty()) {
        m_path += '/';
    }
    m_levels.push_back({m_path.size(), {}});
    const bool isRead =
        m_walker.visitEntries([this](const char* name, unsigned char type) { visitEntry(name, type); });
    if (!isRead) {
        fail(errno);
    }
    std::reverse(m_levels.back().folders.begin(), m_levels.back().folders.end());
}

void FolderEnumeration::visitEntry(const char* name, unsigned char type) {
    m_path.resize(m_levels.back().pathLength);
    m_path += name;
    if (m_path.size() >= PATH_MAX) {
        fail(ENAMETOOLONG);
    } else {
        using Kind = ZPKFileManager::ItemKind;
        m_visitor(m_path, type == DT_DIR ? Kind::Folder : type == DT_LNK ? Kind::Link : Kind::Other);
        if (type == DT_DIR) {
            m_levels.back().folders.emplace_back(name);
        }
    }
    m_path.resize(m_levels.back().pathLength);
}

void FolderEnumeration::fail(int error) {
    m_outcome = m_outcome ? ZPKFailure::ofSystem(ZPKPath::join(m_folder, m_path), error) : m_outcome;
}

}  // namespace

bool ZPKFileManager::fileExists(const std::string& path) {
    struct stat attributes;
    return ZPKHeldFolder::look(path, attributes);
}

bool ZPKFileManager::isFolder(const std::string& path) {
    struct stat attributes;
    return ZPKHeldFolder::look(path, attributes) && S_ISDIR(attributes.st_mode);
}

bool ZPKFileManager::isRegularFile(const std::string& path) {
    struct stat attributes;
    return ZPKHeldFolder::look(path, attributes) && S_ISREG(attributes.st_mode);
}

bool ZPKFileManager::isFolderNotFollowingLinks(const std::string& path) {
    struct stat attributes;
    return ZPKHeldFolder::look(path, attributes, AT_SYMLINK_NOFOLLOW) && S_ISDIR(attributes.st_mode);
}

bool ZPKFileManager::isExecutableFile(const std::string& path) {
    const ZPKHeldFolder::Place place = ZPKHeldFolder::placeOf(path);
    return ::faccessat(place.folder, place.name, X_OK, AT_EACCESS) == 0;
}

bool ZPKFileManager::isExecutableRegularFile(const std::string& path) {
    return isRegularFile(path) && isExecutableFile(path);
}

bool ZPKFileManager::isOnFileSystemWithoutExecution(const std::string& path) {
    const ZPKHeldFolder::Place place = ZPKHeldFolder::placeOf(path);
    struct statvfs fileSystem;
    if (place.folder == AT_FDCWD) {
        return ::statvfs(place.name, &fileSystem) == 0 && (fileSystem.f_flag & ST_NOEXEC) != 0;
    }
    const ZPKFileDescriptor item(::openat(place.folder, place.name, O_PATH | O_CLOEXEC));
    return ::fstatvfs(item.get(), &fileSystem) == 0 && (fileSystem.f_flag & ST_NOEXEC) != 0;
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
    if (first || (!ZPKHeldFolder::look(path, attributes, AT_SYMLINK_NOFOLLOW) && errno == ENOENT)) {
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

ZPKOutcome ZPKFileManager::enumerateFolder(const std::string& folder, const ItemVisitor& visitor,
                                           const std::string& prefix) {
    ZPKFolderWalker walker(ZPKFolderWalker::Access::Plain);
    ZPKOutcome outcome = enterFolder(walker, folder);
    const auto fail = [&](const std::string& path, int error) {
        outcome = outcome ? ZPKFailure::ofSystem(ZPKPath::join(folder, path.substr(prefix.size())), error)
                          : outcome;
    };
    std::string path = prefix;
    std::vector<std::size_t> lengths{prefix.size()};
    while (walker.isInside()) {
        path.resize(lengths.back());
        const ZPKFolderWalker::Entry* entry = walker.nextEntry();
        if (entry == nullptr) {
            lengths.pop_back();
            walker.leave();
            continue;
        }
        path += entry->name;
        if (path.size() - prefix.size() >= PATH_MAX) {
            fail(path, ENAMETOOLONG);
            continue;
        }
        const bool isFolder = entry->type == DT_DIR;
        visitor(path, isFolder ? ItemKind::Folder : entry->type == DT_LNK ? ItemKind::Link : ItemKind::Other);
        if (!isFolder) {
            continue;
        }
        const bool isEntered = walker.enter(entry->name);
        if (!isEntered || !walker.readEntries()) {
            fail(path, errno);
        }
        if (isEntered) {
            path += '/';
            lengths.push_back(path.size());
        }
    }
    return outcome;
}

ZPKOutcome ZPKFileManager::visitFolder(const std::string& folder, const ItemVisitor& visitor) {
    return FolderEnumeration(folder, visitor).run();
}

ZPKOutcome ZPKFileManager::subpathsOfFolder(const std::string& folder, std::vector<std::string>& outPaths) {
    outPaths.clear();
    return enumerateFolder(folder,
                           [&outPaths](const std::string& path, ItemKind) { outPaths.push_back(path); });
}
