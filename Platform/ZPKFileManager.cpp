// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Platform/ZPKFileManager.h"

#include <dirent.h>
#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "Platform/ZPKFileHandle.h"
#include "Platform/ZPKFolderWalker.h"

namespace {

/// A path taken apart at its last component, for operations on the item itself.
struct ItemPlace {
    std::string folder;
    std::string name;

    /// "", "/" and paths that end in "." or ".." name no item of a folder.
    bool isItem() const { return !name.empty() && name != "." && name != ".."; }

    ZPKFileDescriptor openFolder() const {
        return ZPKFileDescriptor(::open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    }
};

ItemPlace placeOf(const std::string& path) {
    const std::size_t last = path.find_last_not_of('/');
    if (last == std::string::npos) {
        return {};
    }
    const std::size_t separator = path.find_last_of('/', last);
    if (separator == std::string::npos) {
        return {".", path.substr(0, last + 1)};
    }
    return {path.substr(0, separator + 1), path.substr(separator + 1, last - separator)};
}

/// What could not be unlinked because it is a folder.
bool isFolderError(int error) {
    return error == EISDIR || error == EPERM;
}

bool unlinkOrGone(int folder, const std::string& name, int flags) {
    return ::unlinkat(folder, name.c_str(), flags) == 0 || errno == ENOENT;
}

/// Removes a folder with everything in it.
class TreeRemover {
public:
    bool remove(int parent, const std::string& name) {
        enterOrRemove(parent, name);
        while (m_walker.isInside()) {
            const ZPKFolderWalker::Entry* entry = m_walker.nextEntry();
            if (entry == nullptr) {
                leave(parent);
            } else {
                removeEntry(*entry);
            }
        }
        return m_complete;
    }

private:
    void removeEntry(const ZPKFolderWalker::Entry& entry) {
        if (entry.type != DT_DIR) {
            if (unlinkOrGone(m_walker.descriptor(), entry.name, 0)) {
                return;
            }
            if (!isFolderError(errno)) {
                m_complete = false;
                return;
            }
        }
        enterOrRemove(m_walker.descriptor(), entry.name);
    }

    void enterOrRemove(int parent, const std::string& name) {
        if (m_walker.enterAt(parent, name)) {
            m_walker.readEntries();
        } else if (!unlinkOrGone(parent, name, AT_REMOVEDIR)) {
            m_complete = false;
        }
    }

    void leave(int startingParent) {
        const std::string name = m_walker.name();
        if (!m_walker.leave()) {
            m_complete = false;
            return;
        }
        const int parent = m_walker.isInside() ? m_walker.descriptor() : startingParent;
        if (!unlinkOrGone(parent, name, AT_REMOVEDIR)) {
            m_complete = false;
        }
    }

    ZPKFolderWalker m_walker{ZPKFolderWalker::Access::ForRemoval};
    bool m_complete = true;
};

constexpr mode_t kCopiedPermissions = 01777;

/// Copies an item; a folder with everything in it.
class TreeCopier {
public:
    bool copy(int fromFolder, const std::string& fromName, int toFolder, const std::string& toName) {
        copyItem(fromFolder, fromName, toFolder, toName);
        while (m_source.isInside()) {
            const ZPKFolderWalker::Entry* entry = m_source.nextEntry();
            if (entry == nullptr) {
                leave();
            } else {
                copyItem(m_source.descriptor(), entry->name, m_destination.descriptor(), entry->name);
            }
        }
        return m_complete;
    }

private:
    void copyItem(int fromFolder, const std::string& fromName, int toFolder, const std::string& toName) {
        struct stat attributes;
        m_complete &= ::fstatat(fromFolder, fromName.c_str(), &attributes, AT_SYMLINK_NOFOLLOW) == 0 &&
                      copyItem(fromFolder, fromName, toFolder, toName, attributes);
    }

    bool copyItem(int fromFolder, const std::string& fromName, int toFolder, const std::string& toName,
                  const struct stat& attributes) {
        switch (attributes.st_mode & S_IFMT) {
            case S_IFDIR:
                return enterCopy(fromFolder, fromName, toFolder, toName);
            case S_IFREG:
                return copyFile(fromFolder, fromName, toFolder, toName);
            case S_IFLNK:
                return copyLink(fromFolder, fromName, toFolder, toName, attributes);
            default:
                return false;
        }
    }

    bool enterCopy(int fromFolder, const std::string& fromName, int toFolder, const std::string& toName) {
        if (!m_source.enterAt(fromFolder, fromName)) {
            return false;
        }
        // Until everything is in it the copy is open to its owner alone.
        if (::mkdirat(toFolder, toName.c_str(), S_IRWXU) != 0 || !m_destination.enterAt(toFolder, toName)) {
            m_source.leave();
            return false;
        }
        return m_source.readEntries();
    }

    static bool copyFile(int fromFolder, const std::string& fromName, int toFolder,
                         const std::string& toName) {
        const ZPKResult<ZPKFileHandle> from = ZPKFileHandle::forReadingAt(fromFolder, fromName);
        if (!from) {
            return false;
        }
        ZPKResult<ZPKFileHandle> to = ZPKFileHandle::newFileAt(toFolder, toName, S_IRUSR | S_IWUSR);
        if (!to || !to->append(*from, 0, from->size())) {
            return false;
        }
        const struct stat& attributes = from->attributes();
        const std::array<timespec, 2> times{attributes.st_atim, attributes.st_mtim};
        return ::fchmod(to->descriptor(), attributes.st_mode & kCopiedPermissions) == 0 &&
               ::futimens(to->descriptor(), times.data()) == 0;
    }

    static bool copyLink(int fromFolder, const std::string& fromName, int toFolder, const std::string& toName,
                         const struct stat& attributes) {
        std::string target(PATH_MAX, '\0');
        const ssize_t length = ::readlinkat(fromFolder, fromName.c_str(), target.data(), target.size());
        if (length < 0) {
            return false;
        }
        target.resize(static_cast<std::size_t>(length));
        if (::symlinkat(target.c_str(), toFolder, toName.c_str()) != 0) {
            return false;
        }
        const std::array<timespec, 2> times{attributes.st_atim, attributes.st_mtim};
        return ::utimensat(toFolder, toName.c_str(), times.data(), AT_SYMLINK_NOFOLLOW) == 0;
    }

    void leave() {
        const struct statx& attributes = m_source.attributes();
        const auto timeOf = [](const statx_timestamp& stamp) {
            return timespec{static_cast<time_t>(stamp.tv_sec), static_cast<long>(stamp.tv_nsec)};
        };
        const std::array<timespec, 2> times{timeOf(attributes.stx_atime), timeOf(attributes.stx_mtime)};
        const int copy = m_destination.descriptor();
        // The way up from a folder that its owner may not search has to be taken before its mode is set.
        const ZPKFileDescriptor kept(::fcntl(copy, F_DUPFD_CLOEXEC, 0));
        m_complete &= ::futimens(copy, times.data()) == 0;
        const bool regained = m_destination.leave();
        m_complete &= ::fchmod(kept.get(), attributes.stx_mode & kCopiedPermissions) == 0;
        if (!m_source.leave() || !regained) {
            m_complete = false;
            m_source = ZPKFolderWalker(ZPKFolderWalker::Access::Plain);
        }
    }

    ZPKFolderWalker m_source{ZPKFolderWalker::Access::Plain};
    ZPKFolderWalker m_destination{ZPKFolderWalker::Access::Plain};
    bool m_complete = true;
};

/// True when the open folder `inner` is, or lies anywhere below, the item described by `outer`.
bool liesIn(const ZPKFileDescriptor& inner, const struct stat& outer) {
    ZPKFileDescriptor current(::openat(inner.get(), ".", O_PATH | O_DIRECTORY | O_CLOEXEC));
    struct stat attributes;
    while (current.isOpen() && ::fstat(current.get(), &attributes) == 0) {
        if (attributes.st_dev == outer.st_dev && attributes.st_ino == outer.st_ino) {
            return true;
        }
        ZPKFileDescriptor parent(::openat(current.get(), "..", O_PATH | O_DIRECTORY | O_CLOEXEC));
        struct stat above;
        if (!parent.isOpen() || ::fstat(parent.get(), &above) != 0 ||
            (above.st_dev == attributes.st_dev && above.st_ino == attributes.st_ino)) {
            return false;
        }
        current = std::move(parent);
    }
    return false;
}

bool makeOneFolder(const std::string& path, unsigned int mode) {
    return ::mkdir(path.c_str(), mode) == 0 || errno == EEXIST;
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

bool ZPKFileManager::isFolderNotFollowingLinks(const std::string& path) {
    struct stat attributes;
    return ::lstat(path.c_str(), &attributes) == 0 && S_ISDIR(attributes.st_mode);
}

bool ZPKFileManager::isExecutableFile(const std::string& path) {
    return ::faccessat(AT_FDCWD, path.c_str(), X_OK, AT_EACCESS) == 0;
}

bool ZPKFileManager::isExecutableRegularFile(const std::string& path) {
    struct stat attributes;
    return ::stat(path.c_str(), &attributes) == 0 && S_ISREG(attributes.st_mode) && isExecutableFile(path);
}

bool ZPKFileManager::createFolderWithIntermediateFolders(const std::string& path, unsigned int mode) {
    for (std::size_t at = path.find('/', 1); at != std::string::npos; at = path.find('/', at + 1)) {
        // Only the last step decides: a parent that may not be made may be there all the same.
        makeOneFolder(path.substr(0, at), mode);
    }
    makeOneFolder(path, mode);
    return isFolder(path);
}

bool ZPKFileManager::removeItem(const std::string& path) {
    const ItemPlace place = placeOf(path);
    if (!place.isItem()) {
        return false;
    }
    const ZPKFileDescriptor folder = place.openFolder();
    if (!folder.isOpen()) {
        return false;
    }
    if (::unlinkat(folder.get(), place.name.c_str(), 0) == 0) {
        return true;
    }
    return isFolderError(errno) && TreeRemover().remove(folder.get(), place.name);
}

bool ZPKFileManager::copyItem(const std::string& source, const std::string& destination) {
    const ItemPlace from = placeOf(source);
    const ItemPlace to = placeOf(destination);
    if (!from.isItem() || !to.isItem()) {
        return false;
    }
    const ZPKFileDescriptor fromFolder = from.openFolder();
    const ZPKFileDescriptor toFolder = to.openFolder();
    struct stat attributes;
    if (!fromFolder.isOpen() || !toFolder.isOpen() ||
        ::fstatat(fromFolder.get(), from.name.c_str(), &attributes, AT_SYMLINK_NOFOLLOW) != 0) {
        return false;
    }
    // A folder copied into itself would never be complete.
    if (S_ISDIR(attributes.st_mode) && liesIn(toFolder, attributes)) {
        return false;
    }
    return TreeCopier().copy(fromFolder.get(), from.name, toFolder.get(), to.name);
}

bool ZPKFileManager::contentsOfFolder(const std::string& folder, std::vector<std::string>& outNames) {
    outNames.clear();
    ZPKFolderWalker walker(ZPKFolderWalker::Access::Plain);
    // The trailing separator lets a link to a folder count as the folder.
    if (folder.empty() || !walker.enterAt(AT_FDCWD, folder + "/") || !walker.readEntries()) {
        return false;
    }
    while (const ZPKFolderWalker::Entry* entry = walker.nextEntry()) {
        outNames.push_back(entry->name);
    }
    return true;
}

void ZPKFileManager::enumerateFolder(const std::string& folder, const ItemVisitor& visitor) {
    ZPKFolderWalker walker(ZPKFolderWalker::Access::Plain);
    if (folder.empty() || !walker.enterAt(AT_FDCWD, folder + "/")) {
        return;
    }
    walker.readEntries();
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
            continue;
        }
        const bool isFolder = entry->type == DT_DIR;
        visitor(path, isFolder ? ItemKind::Folder : entry->type == DT_LNK ? ItemKind::Link : ItemKind::Other);
        if (isFolder && walker.enter(entry->name)) {
            walker.readEntries();
            path += '/';
            lengths.push_back(path.size());
        }
    }
}

void ZPKFileManager::subpathsOfFolder(const std::string& folder, std::vector<std::string>& outPaths) {
    outPaths.clear();
    enumerateFolder(folder, [&outPaths](const std::string& path, ItemKind) { outPaths.push_back(path); });
}
