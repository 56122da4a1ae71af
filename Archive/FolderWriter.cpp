// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/FolderWriter.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "Archive/Failure.h"
#include "Base/ZPKDescriptorIO.h"
#include "Base/ZPKPath.h"

namespace zpk_archive {

namespace {

constexpr int kFolderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
constexpr int kNewFileFlags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
constexpr mode_t kPermissions = 07777;

void throwUnless(bool isGood) {
    if (!isGood) {
        throw MemberFailure::ofSystem(errno);
    }
}

/// Works on a folder that its owner may not even read, unlike opening it in the usual way.
bool openToOwner(int parent, const char* name, mode_t mode) {
    const ZPKFileDescriptor folder(::openat(parent, name, O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    const std::string path = "/proc/self/fd/" + std::to_string(folder.get());
    return folder.isOpen() && ::chmod(path.c_str(), (mode & kPermissions) | S_IRWXU) == 0;
}

/// Makes sure that the owner may enter the folder and write in it.
bool isOpenToOwner(int parent, const char* name, const struct stat& status) {
    return (status.st_mode & S_IRWXU) == S_IRWXU || openToOwner(parent, name, status.st_mode);
}

/// Makes a folder that is open to its owner, whatever the process's mask.
bool makeNewFolder(int parent, const char* name, mode_t mode) {
    struct stat made {};
    return ::mkdirat(parent, name, mode) == 0 && ::fstatat(parent, name, &made, AT_SYMLINK_NOFOLLOW) == 0 &&
           isOpenToOwner(parent, name, made);
}

/// The same for a folder and those on the way to it that are missing.
bool makeMissingFolders(const std::string& path) {
    if (makeNewFolder(AT_FDCWD, path.c_str(), 0777) || errno == EEXIST) {
        return true;
    }
    const std::string parent = ZPKPath::parent(path);
    return errno == ENOENT && parent != path && makeMissingFolders(parent) &&
           makeNewFolder(AT_FDCWD, path.c_str(), 0777);
}

/// Frees the name for something new: a file, a link or an empty folder goes.
void clearPlace(int parent, const char* name) {
    if (::unlinkat(parent, name, 0) == 0 || errno == ENOENT) {
        return;
    }
    throwUnless(errno == EISDIR || errno == EPERM);
    throwUnless(::unlinkat(parent, name, AT_REMOVEDIR) == 0);
}

ZPKFileDescriptor openFolder(int parent, const char* name, bool makeMissing) {
    ZPKFileDescriptor folder(::openat(parent, name, kFolderFlags));
    if (!folder.isOpen() && errno == ENOENT && makeMissing) {
        throwUnless(makeNewFolder(parent, name, 0777));
        folder = ZPKFileDescriptor(::openat(parent, name, kFolderFlags));
    }
    if (!folder.isOpen() && (errno == ELOOP || errno == ENOTDIR)) {
        throw MemberFailure("a part of its path is no folder");
    }
    throwUnless(folder.isOpen());
    return folder;
}

void throwUnlessSame(const FileIdentity& found, const FileIdentity& expected) {
    if (found != expected) {
        throw MemberFailure("the file that it is a link to has been replaced");
    }
}

std::optional<FileIdentity> identityAt(int parent, const char* name) {
    struct stat found {};
    const bool isThere = ::fstatat(parent, name, &found, AT_SYMLINK_NOFOLLOW) == 0;
    return isThere ? std::optional(FileIdentity(found)) : std::nullopt;
}

void setModeAndTime(int descriptor, const ModeAndTime& modeAndTime) {
    const timespec times[2] = {modeAndTime.modified, modeAndTime.modified};
    // The mode first: it may end the permission to nothing, while times need ownership alone.
    throwUnless(::fchmod(descriptor, modeAndTime.permissions) == 0);
    throwUnless(::futimens(descriptor, times) == 0);
}

}  // namespace

FolderWriter::FolderWriter(const std::string& folder) {
    constexpr int kFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
    m_root = ZPKFileDescriptor(::open(folder.c_str(), kFlags));
    if (!m_root.isOpen() && errno == ENOENT && makeMissingFolders(folder)) {
        m_root = ZPKFileDescriptor(::open(folder.c_str(), kFlags));
    }
    if (!m_root.isOpen()) {
        throw ArchiveFailure::ofSystem(errno);
    }
}

int FolderWriter::openParent(const MemberPath& path, bool makeMissing) {
    const std::size_t depth = path.depth() - 1;
    std::size_t common = 0;
    while (common < depth && common < m_way.size() && m_way[common].name == path.component(common)) {
        ++common;
    }
    m_way.resize(common);
    int parent = common == 0 ? m_root.get() : m_way.back().descriptor.get();
    for (std::size_t i = common; i < depth; ++i) {
        m_way.push_back({path.component(i), openFolder(parent, path.component(i), makeMissing)});
        parent = m_way.back().descriptor.get();
    }
    return parent;
}

void FolderWriter::makeFolder(const MemberPath& path, const ModeAndTime& modeAndTime) {
    const int parent = openParent(path, true);
    const char* const name = path.leaf();
    if (!makeNewFolder(parent, name, S_IRWXU)) {
        throwUnless(errno == EEXIST);
        struct stat status {};
        throwUnless(::fstatat(parent, name, &status, AT_SYMLINK_NOFOLLOW) == 0);
        if (S_ISDIR(status.st_mode)) {
            throwUnless(isOpenToOwner(parent, name, status));
        } else {
            clearPlace(parent, name);
            throwUnless(makeNewFolder(parent, name, S_IRWXU));
        }
    }
    m_postponed.push_back({path, modeAndTime, S_IFDIR});
}

void FolderWriter::makeSymbolicLink(const MemberPath& path, const std::string& target,
                                    const timespec& modified) {
    const int parent = openParent(path, true);
    if (::symlinkat(target.c_str(), parent, path.leaf()) != 0) {
        throwUnless(errno == EEXIST);
        clearPlace(parent, path.leaf());
        throwUnless(::symlinkat(target.c_str(), parent, path.leaf()) == 0);
    }
    const timespec times[2] = {modified, modified};
    throwUnless(::utimensat(parent, path.leaf(), times, AT_SYMLINK_NOFOLLOW) == 0);
}

ZPKFileDescriptor FolderWriter::makeFile(const MemberPath& path) {
    const int parent = openParent(path, true);
    ZPKFileDescriptor file(::openat(parent, path.leaf(), kNewFileFlags, 0600));
    if (!file.isOpen() && errno == EEXIST) {
        clearPlace(parent, path.leaf());
        file = ZPKFileDescriptor(::openat(parent, path.leaf(), kNewFileFlags, 0600));
    }
    throwUnless(file.isOpen());
    return file;
}

void FolderWriter::closeFile(ZPKFileDescriptor file, const ModeAndTime& modeAndTime) {
    setModeAndTime(file.get(), modeAndTime);
    throwUnless(file.close());
}

void FolderWriter::closeFileForNow(ZPKFileDescriptor file, const MemberPath& path,
                                   const ModeAndTime& modeAndTime) {
    // The process's mask may have made it a file that cannot be opened again.
    throwUnless(::fchmod(file.get(), S_IRUSR | S_IWUSR) == 0);
    throwUnless(file.close());
    m_postponed.push_back({path, modeAndTime, S_IFREG});
}

void FolderWriter::makeHardLink(const MemberPath& path, const MemberPath& target,
                                const FileIdentity& expected) {
    const ZPKFileDescriptor targetParent(::fcntl(openParent(target, false), F_DUPFD_CLOEXEC, 0));
    throwUnless(targetParent.isOpen());
    std::optional<FileIdentity> found = identityAt(targetParent.get(), target.leaf());
    throwUnless(found.has_value());
    throwUnlessSame(*found, expected);
    const int parent = openParent(path, true);
    found = identityAt(parent, path.leaf());
    if (found == expected) {
        return;
    }
    if (found) {
        clearPlace(parent, path.leaf());
    }
    throwUnless(::linkat(targetParent.get(), target.leaf(), parent, path.leaf(), 0) == 0);
    // Only now is it certain what was linked.
    if (identityAt(parent, path.leaf()) != expected) {
        ::unlinkat(parent, path.leaf(), 0);
        throw MemberFailure("the file that it is a link to has been replaced");
    }
}

ZPKFileDescriptor FolderWriter::reopenFile(const MemberPath& path, const FileIdentity& expected) {
    const int parent = openParent(path, false);
    ZPKFileDescriptor file(::openat(parent, path.leaf(), O_WRONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat found {};
    throwUnless(file.isOpen() && ::fstat(file.get(), &found) == 0);
    throwUnlessSame(FileIdentity(found), expected);
    throwUnless(::ftruncate(file.get(), 0) == 0);
    return file;
}

std::optional<FileIdentity> FolderWriter::identify(const MemberPath& path) {
    try {
        return identityAt(openParent(path, false), path.leaf());
    } catch (const MemberFailure&) {
        return std::nullopt;
    }
}

ZPKFileDescriptor FolderWriter::locate(const MemberPath& path) {
    const int parent = openParent(path, false);
    ZPKFileDescriptor found(::openat(parent, path.leaf(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
    throwUnless(found.isOpen());
    return found;
}

std::string FolderWriter::readFile(const MemberPath& path, std::size_t limit) {
    const int parent = openParent(path, false);
    const ZPKFileDescriptor file(
        ::openat(parent, path.leaf(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat status {};
    throwUnless(file.isOpen() && ::fstat(file.get(), &status) == 0);
    if (!S_ISREG(status.st_mode)) {
        throw MemberFailure("the file has been replaced");
    }
    std::optional<std::string> contents = ZPKDescriptorIO::readToEnd(file.get(), limit);
    throwUnless(contents.has_value());
    return *std::move(contents);
}

void FolderWriter::remove(const MemberPath& path) {
    const int parent = openParent(path, false);
    throwUnless(::unlinkat(parent, path.leaf(), 0) == 0 || errno == ENOENT);
}

void FolderWriter::sortPostponed() {
    // What lies deepest comes first, for a folder's own mode may forbid to enter it. Of several entries
    // for one path the archive's last stays last.
    std::stable_sort(
        m_postponed.begin(), m_postponed.end(),
        [](const Postponed& left, const Postponed& right) { return left.path.depth() > right.path.depth(); });
}

void FolderWriter::apply(const Postponed& item) {
    const std::optional<FileIdentity> found = identify(item.path);
    if (!found || found->type != item.type) {
        return;  // A later member took its place.
    }
    const int flags = item.type == S_IFDIR ? kFolderFlags : O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
    const ZPKFileDescriptor opened(::openat(openParent(item.path, false), item.path.leaf(), flags));
    throwUnless(opened.isOpen());
    setModeAndTime(opened.get(), item.modeAndTime);
}

}  // namespace zpk_archive
