// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/FolderWriter.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <optional>

#include "Archive/Failure.h"
#include "Archive/MemberName.h"
#include "Base/ZPKDescriptorIO.h"

namespace zpk_archive {

namespace {

constexpr int kFolderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

void throwUnless(bool good) {
    if (!good) {
        throw MemberFailure::ofSystem(errno);
    }
}

std::string joined(const MemberPath& path) {
    std::string text;
    for (const std::string& component : path) {
        text += (text.empty() ? "" : "/") + component;
    }
    return text;
}

/// Works on a folder that its owner may not even read, unlike opening it in the usual way.
void openToOwner(int parent, const std::string& name) {
    ZPKFileDescriptor folder(::openat(parent, name.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    throwUnless(folder.isOpen());
    throwUnless(::chmod(("/proc/self/fd/" + std::to_string(folder.get())).c_str(), 0700) == 0);
}

void setAttributes(int descriptor, const Attributes& attributes) {
    timespec times[2] = {attributes.modified, attributes.modified};
    // The mode first: it may end the permission to nothing, while times need ownership alone.
    throwUnless(::fchmod(descriptor, attributes.permissions) == 0);
    throwUnless(::futimens(descriptor, times) == 0);
}

}  // namespace

FolderWriter::FolderWriter(const std::string& folder) {
    std::error_code ignored;  // What counts is whether it can be opened afterwards.
    std::filesystem::create_directories(folder, ignored);
    m_root = ZPKFileDescriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!m_root.isOpen()) {
        throw ArchiveFailure::ofSystem(errno);
    }
}

int FolderWriter::openFolder(int parent, const std::string& name, bool makeMissing) {
    int folder = ::openat(parent, name.c_str(), kFolderFlags);
    if (folder < 0 && errno == ENOENT && makeMissing) {
        throwUnless(::mkdirat(parent, name.c_str(), 0777) == 0);
        folder = ::openat(parent, name.c_str(), kFolderFlags);
    }
    if (folder < 0 && (errno == ELOOP || errno == ENOTDIR)) {
        throw MemberFailure("a part of its path is no folder");
    }
    throwUnless(folder >= 0);
    return folder;
}

int FolderWriter::openParent(const MemberPath& path, bool makeMissing) {
    std::size_t depth = path.size() - 1;
    std::size_t common = 0;
    while (common < depth && common < m_way.size() && m_way[common].name == path[common]) {
        ++common;
    }
    m_way.resize(common);
    for (std::size_t i = common; i < depth; ++i) {
        int parent = i == 0 ? m_root.get() : m_way[i - 1].descriptor.get();
        m_way.push_back({path[i], ZPKFileDescriptor(openFolder(parent, path[i], makeMissing))});
    }
    return depth == 0 ? m_root.get() : m_way[depth - 1].descriptor.get();
}

void FolderWriter::clearPlace(int parent, const std::string& name) {
    if (::unlinkat(parent, name.c_str(), 0) == 0 || errno == ENOENT) {
        return;
    }
    if (errno != EISDIR && errno != EPERM) {
        throw MemberFailure::ofSystem(errno);
    }
    throwUnless(::unlinkat(parent, name.c_str(), AT_REMOVEDIR) == 0);
}

void FolderWriter::makeFolder(const MemberPath& path, const Attributes& attributes) {
    int parent = openParent(path, true);
    const std::string& name = path.back();
    if (::mkdirat(parent, name.c_str(), 0700) != 0) {
        throwUnless(errno == EEXIST);
        struct stat status {};
        throwUnless(::fstatat(parent, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0);
        if (!S_ISDIR(status.st_mode)) {
            clearPlace(parent, name);
            throwUnless(::mkdirat(parent, name.c_str(), 0700) == 0);
        } else if ((status.st_mode & 0700) != 0700) {
            openToOwner(parent, name);
        }
    }
    m_postponed.push_back({joined(path), attributes, S_IFDIR});
}

void FolderWriter::makeSymbolicLink(const MemberPath& path, const std::string& target,
                                    const timespec& modified) {
    int parent = openParent(path, true);
    const char* name = path.back().c_str();
    if (::symlinkat(target.c_str(), parent, name) != 0) {
        throwUnless(errno == EEXIST);
        clearPlace(parent, path.back());
        throwUnless(::symlinkat(target.c_str(), parent, name) == 0);
    }
    timespec times[2] = {modified, modified};
    throwUnless(::utimensat(parent, name, times, AT_SYMLINK_NOFOLLOW) == 0);
}

ZPKFileDescriptor FolderWriter::makeFile(const MemberPath& path) {
    constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    int parent = openParent(path, true);
    const char* name = path.back().c_str();
    ZPKFileDescriptor file(::openat(parent, name, kFlags, 0600));
    if (!file.isOpen() && errno == EEXIST) {
        clearPlace(parent, path.back());
        file = ZPKFileDescriptor(::openat(parent, name, kFlags, 0600));
    }
    throwUnless(file.isOpen());
    return file;
}

void FolderWriter::closeFile(ZPKFileDescriptor file, const Attributes& attributes) {
    setAttributes(file.get(), attributes);
    throwUnless(file.close());
}

void FolderWriter::closeFileForNow(ZPKFileDescriptor file, const MemberPath& path,
                                   const Attributes& attributes) {
    throwUnless(file.close());
    m_postponed.push_back({joined(path), attributes, S_IFREG});
}

void FolderWriter::makeHardLink(const MemberPath& path, const MemberPath& target, const Identity& expected) {
    ZPKFileDescriptor targetParent(::fcntl(openParent(target, false), F_DUPFD_CLOEXEC, 0));
    throwUnless(targetParent.isOpen());
    struct stat found {};
    throwUnless(::fstatat(targetParent.get(), target.back().c_str(), &found, AT_SYMLINK_NOFOLLOW) == 0);
    if (Identity(found) != expected) {
        throw MemberFailure("the file that it is a link to has been replaced");
    }
    int parent = openParent(path, true);
    const char* name = path.back().c_str();
    if (::fstatat(parent, name, &found, AT_SYMLINK_NOFOLLOW) == 0) {
        if (Identity(found) == expected) {
            return;
        }
        clearPlace(parent, path.back());
    }
    throwUnless(::linkat(targetParent.get(), target.back().c_str(), parent, name, 0) == 0);
    // Only now is it certain what was linked.
    if (::fstatat(parent, name, &found, AT_SYMLINK_NOFOLLOW) != 0 || Identity(found) != expected) {
        ::unlinkat(parent, name, 0);
        throw MemberFailure("the file that it is a link to has been replaced");
    }
}

ZPKFileDescriptor FolderWriter::reopenFile(const MemberPath& path, const Identity& expected) {
    int parent = openParent(path, false);
    ZPKFileDescriptor file(
        ::openat(parent, path.back().c_str(), O_WRONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat found {};
    throwUnless(file.isOpen() && ::fstat(file.get(), &found) == 0);
    if (Identity(found) != expected) {
        throw MemberFailure("the file that it is a link to has been replaced");
    }
    throwUnless(::ftruncate(file.get(), 0) == 0);
    return file;
}

bool FolderWriter::examine(const MemberPath& path, struct stat& status) {
    try {
        int parent = openParent(path, false);
        return ::fstatat(parent, path.back().c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0;
    } catch (const MemberFailure&) {
        return false;
    }
}

ZPKFileDescriptor FolderWriter::locate(const MemberPath& path) {
    int parent = openParent(path, false);
    ZPKFileDescriptor found(::openat(parent, path.back().c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
    throwUnless(found.isOpen());
    return found;
}

std::string FolderWriter::readFile(const MemberPath& path, std::size_t limit) {
    int parent = openParent(path, false);
    ZPKFileDescriptor file(
        ::openat(parent, path.back().c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
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
    int parent = openParent(path, false);
    throwUnless(::unlinkat(parent, path.back().c_str(), 0) == 0 || errno == ENOENT);
}

void FolderWriter::sortPostponed() {
    // What lies deepest comes first, for a folder's own mode may forbid to enter it. Of several entries
    // for one path the archive's last stays last.
    auto depth = [](const Postponed& item) { return std::count(item.path.begin(), item.path.end(), '/'); };
    std::stable_sort(
        m_postponed.begin(), m_postponed.end(),
        [&](const Postponed& left, const Postponed& right) { return depth(left) > depth(right); });
}

void FolderWriter::apply(const Postponed& item) {
    MemberPath path = splitMemberName(item.path);
    struct stat status {};
    if (!examine(path, status) || (status.st_mode & S_IFMT) != item.type) {
        return;  // A later member took its place.
    }
    int parent = openParent(path, false);
    int flags = item.type == S_IFDIR ? kFolderFlags : O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
    ZPKFileDescriptor opened(::openat(parent, path.back().c_str(), flags));
    throwUnless(opened.isOpen());
    setAttributes(opened.get(), item.attributes);
}

}  // namespace zpk_archive
