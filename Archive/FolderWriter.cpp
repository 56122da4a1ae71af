// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/FolderWriter.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <iterator>
#include <utility>

#include "Archive/DiskCalls.h"
#include "Archive/Failure.h"
#include "Base/ZPKDescriptorIO.h"

namespace zpk_archive {

namespace {

constexpr int kFolderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
constexpr int kNewFileFlags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;

/// Bytes that all that is postponed takes, and one item of it without its path.
constexpr std::size_t kPostponedLimit = std::size_t{6} << 20;
constexpr std::size_t kPostponedSize = 144;

void throwUnlessSame(const FileIdentity& found, const FileIdentity& expected) {
    if (found != expected) {
        throw MemberFailure("the file that it is a link to has been replaced");
    }
}

void setModeAndTime(int descriptor, const ModeAndTime& modeAndTime) {
    const timespec times[2] = {modeAndTime.modified, modeAndTime.modified};
    // The mode first: it may end the permission to nothing, while times need ownership alone.
    DiskCalls::throwUnless(
        DiskCalls::succeeds([&] { return ::fchmod(descriptor, modeAndTime.permissions); }));
    DiskCalls::throwUnless(DiskCalls::succeeds([&] { return ::futimens(descriptor, times); }));
}

}  // namespace

FolderWriter::FolderWriter(const std::string& folder, Failed failed) : m_failed(std::move(failed)) {
    constexpr int kFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
    m_root = DiskCalls::open(AT_FDCWD, folder.c_str(), kFlags);
    if (!m_root.isOpen() && errno == ENOENT && DiskCalls::makeMissingFolders(folder)) {
        m_root = DiskCalls::open(AT_FDCWD, folder.c_str(), kFlags);
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
        m_way.push_back({path.component(i), DiskCalls::openFolder(parent, path.component(i), makeMissing)});
        parent = m_way.back().descriptor.get();
    }
    return parent;
}

void FolderWriter::makeFolder(const MemberPath& path, const ModeAndTime& modeAndTime) {
    const int parent = openParent(path, true);
    const char* const name = path.leaf();
    if (!DiskCalls::makeFolder(parent, name, S_IRWXU)) {
        DiskCalls::throwUnless(errno == EEXIST);
        struct stat status {};
        DiskCalls::throwUnless(DiskCalls::status(parent, name, status));
        if (S_ISDIR(status.st_mode)) {
            DiskCalls::throwUnless(DiskCalls::isOpenToOwner(parent, name, status));
        } else {
            DiskCalls::clearPlace(parent, name);
            DiskCalls::throwUnless(DiskCalls::makeFolder(parent, name, S_IRWXU));
        }
    }
    postpone(path, {modeAndTime, S_IFDIR});
}

void FolderWriter::makeSymbolicLink(const MemberPath& path, const std::string& target,
                                    const timespec& modified) {
    const int parent = openParent(path, true);
    const auto make = [&] { return ::symlinkat(target.c_str(), parent, path.leaf()); };
    if (!DiskCalls::succeeds(make)) {
        DiskCalls::throwUnless(errno == EEXIST);
        DiskCalls::clearPlace(parent, path.leaf());
        DiskCalls::throwUnless(DiskCalls::succeeds(make));
    }
    const timespec times[2] = {modified, modified};
    DiskCalls::throwUnless(
        DiskCalls::succeeds([&] { return ::utimensat(parent, path.leaf(), times, AT_SYMLINK_NOFOLLOW); }));
}

ZPKFileDescriptor FolderWriter::makeFile(const MemberPath& path) {
    const int parent = openParent(path, true);
    ZPKFileDescriptor file = DiskCalls::open(parent, path.leaf(), kNewFileFlags, 0600);
    if (!file.isOpen() && errno == EEXIST) {
        DiskCalls::clearPlace(parent, path.leaf());
        file = DiskCalls::open(parent, path.leaf(), kNewFileFlags, 0600);
    }
    DiskCalls::throwUnless(file.isOpen());
    return file;
}

void FolderWriter::closeFile(ZPKFileDescriptor file, const ModeAndTime& modeAndTime) {
    setModeAndTime(file.get(), modeAndTime);
    DiskCalls::throwUnless(file.close());
}

void FolderWriter::closeFileForNow(ZPKFileDescriptor file, const MemberPath& path,
                                   const ModeAndTime& modeAndTime) {
    // The process's mask may have made it a file that cannot be opened again.
    DiskCalls::throwUnless(DiskCalls::succeeds([&] { return ::fchmod(file.get(), S_IRUSR | S_IWUSR); }));
    DiskCalls::throwUnless(file.close());
    postpone(path, {modeAndTime, S_IFREG});
}

void FolderWriter::makeHardLink(const MemberPath& path, const MemberPath& target,
                                const FileIdentity& expected) {
    const int opened = openParent(target, false);
    const ZPKFileDescriptor targetParent(
        ZPKDescriptorIO::retry([opened] { return ::fcntl(opened, F_DUPFD_CLOEXEC, 0); }));
    DiskCalls::throwUnless(targetParent.isOpen());
    std::optional<FileIdentity> found = DiskCalls::identity(targetParent.get(), target.leaf());
    DiskCalls::throwUnless(found.has_value());
    throwUnlessSame(*found, expected);
    const int parent = openParent(path, true);
    found = DiskCalls::identity(parent, path.leaf());
    if (found == expected) {
        return;
    }
    if (found) {
        DiskCalls::clearPlace(parent, path.leaf());
    }
    DiskCalls::throwUnless(DiskCalls::succeeds(
        [&] { return ::linkat(targetParent.get(), target.leaf(), parent, path.leaf(), 0); }));
    // Only now is it certain what was linked.
    if (DiskCalls::identity(parent, path.leaf()) != expected) {
        DiskCalls::remove(parent, path.leaf(), 0);
        throw MemberFailure("the file that it is a link to has been replaced");
    }
}

ZPKFileDescriptor FolderWriter::reopenFile(const MemberPath& path, const FileIdentity& expected) {
    const int parent = openParent(path, false);
    ZPKFileDescriptor file =
        DiskCalls::open(parent, path.leaf(), O_WRONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    struct stat found {};
    DiskCalls::throwUnless(file.isOpen() && DiskCalls::status(file.get(), found));
    throwUnlessSame(FileIdentity(found), expected);
    DiskCalls::throwUnless(DiskCalls::succeeds([&] { return ::ftruncate(file.get(), 0); }));
    return file;
}

std::optional<FileIdentity> FolderWriter::identify(const MemberPath& path) {
    try {
        return DiskCalls::identity(openParent(path, false), path.leaf());
    } catch (const MemberFailure&) {
        return std::nullopt;
    }
}

ZPKFileDescriptor FolderWriter::locate(const MemberPath& path) {
    const int parent = openParent(path, false);
    ZPKFileDescriptor found = DiskCalls::open(parent, path.leaf(), O_PATH | O_NOFOLLOW | O_CLOEXEC);
    DiskCalls::throwUnless(found.isOpen());
    return found;
}

std::string FolderWriter::readFile(const MemberPath& path, std::size_t limit) {
    const int parent = openParent(path, false);
    const ZPKFileDescriptor file =
        DiskCalls::open(parent, path.leaf(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    struct stat status {};
    DiskCalls::throwUnless(file.isOpen() && DiskCalls::status(file.get(), status));
    if (!S_ISREG(status.st_mode)) {
        throw MemberFailure("the file has been replaced");
    }
    std::optional<std::string> contents = ZPKDescriptorIO::readToEnd(file.get(), limit);
    DiskCalls::throwUnless(contents.has_value());
    return *std::move(contents);
}

void FolderWriter::remove(const MemberPath& path) {
    const int parent = openParent(path, false);
    DiskCalls::throwUnless(DiskCalls::remove(parent, path.leaf(), 0) || errno == ENOENT);
    if (const auto item = m_postponed.find(path.text()); item != m_postponed.end()) {
        m_postponedCost -= kPostponedSize + item->first.size();
        m_postponed.erase(item);
    }
}

void FolderWriter::postpone(const MemberPath& path, const Postponed& item) {
    const std::string text = path.text();
    if (m_postponedCost > kPostponedLimit) {
        // The folders on the way are about to be written to.
        applyAllBut(text);
        if (m_postponedCost > kPostponedLimit / 2) {
            applyAllBut("");
        }
    }
    const auto [place, isNew] = m_postponed.insert_or_assign(text, item);
    m_postponedCost += isNew ? kPostponedSize + text.size() : 0;
}

void FolderWriter::applyAllBut(const std::string& wayThatStays) {
    // Backwards, so that what lies deeper comes first: a folder's own mode may forbid to enter it.
    for (auto next = m_postponed.end(); next != m_postponed.begin();) {
        const auto item = std::prev(next);
        const bool stays = wayThatStays.starts_with(item->first) && wayThatStays[item->first.size()] == '/';
        if (stays) {
            next = item;
            continue;
        }
        try {
            apply(MemberPath(item->first), item->second);
        } catch (const std::exception& failure) {
            if (m_failed) {
                m_failed(item->first, failure.what());
            }
        }
        m_postponedCost -= kPostponedSize + item->first.size();
        next = m_postponed.erase(item);
    }
}

void FolderWriter::finish() {
    applyAllBut("");
}

void FolderWriter::apply(const MemberPath& path, const Postponed& item) {
    const std::optional<FileIdentity> found = identify(path);
    if (!found || found->type != item.type) {
        return;  // A later member took its place.
    }
    const int flags = item.type == S_IFDIR ? kFolderFlags : O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
    const ZPKFileDescriptor opened = DiskCalls::open(openParent(path, false), path.leaf(), flags);
    DiskCalls::throwUnless(opened.isOpen());
    setModeAndTime(opened.get(), item.modeAndTime);
}

}  // namespace zpk_archive
