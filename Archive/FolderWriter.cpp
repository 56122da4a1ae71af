// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/FolderWriter.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "Archive/DiskCalls.h"
#include "Archive/Failure.h"
#include "Base/ZPKDescriptorIO.h"

namespace zpk_archive {

namespace {

constexpr int kFolderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
constexpr int kNewFileFlags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;

void throwUnlessSame(const FileIdentity& found, const FileIdentity& expected) {
    if (found != expected) {
        throw MemberFailure("the file that it is a link to has been replaced");
    }
}

/// A descriptor that a file in flight holds is free soon.
bool isShortOfDescriptors(int error) {
    return error == EMFILE || error == ENFILE;
}

}  // namespace

FolderWriter::FolderWriter(const std::string& folder, Failed failed, std::size_t writers)
    : m_postponed(
          [this](const MemberPath& path, const PostponedModes::Item& item) { applyOrTell(path, item); }),
      m_failed(std::move(failed)),
      m_files(writers) {
    constexpr int kFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
    ZPKFileDescriptor root = DiskCalls::open(AT_FDCWD, folder.c_str(), kFlags);
    if (!root.isOpen() && errno == ENOENT && DiskCalls::makeMissingFolders(folder)) {
        root = DiskCalls::open(AT_FDCWD, folder.c_str(), kFlags);
    }
    if (!root.isOpen()) {
        throw ArchiveFailure::ofSystem(errno);
    }
    m_root = std::make_shared<OpenFolder>(std::move(root));
}

const FolderWriter::SharedFolder& FolderWriter::openParent(const MemberPath& path, bool makeMissing) {
    const std::size_t depth = path.depth() - 1;
    std::size_t common = 0;
    while (common < depth && common < m_way.size() && m_way[common].name == path.component(common)) {
        ++common;
    }
    m_way.resize(common);
    for (std::size_t i = common; i < depth; ++i) {
        const OpenFolder& parent = i == 0 ? *m_root : *m_way.back().folder;
        m_way.push_back({path.component(i), openFolder(parent, path.component(i), makeMissing)});
    }
    return depth == 0 ? m_root : m_way.back().folder;
}

const FolderWriter::SharedFolder& FolderWriter::openSettled(const MemberPath& path, bool makeMissing) {
    const SharedFolder& parent = openParent(path, makeMissing);
    settleName(*parent, path.leaf());
    return parent;
}

FolderWriter::SharedFolder FolderWriter::openFolder(const OpenFolder& parent, const char* name,
                                                    bool makeMissing) {
    const auto opened = [&] {
        return std::make_shared<OpenFolder>(DiskCalls::openFolder(parent.descriptor(), name, makeMissing));
    };
    settleName(parent, name);
    try {
        return opened();
    } catch (const MemberFailure&) {
        if (m_files.isEmpty()) {
            throw;
        }
    }
    settle();
    return opened();
}

ZPKFileDescriptor FolderWriter::open(const OpenFolder& parent, const char* name, int flags, mode_t mode) {
    ZPKFileDescriptor opened = DiskCalls::open(parent.descriptor(), name, flags, mode);
    if (!opened.isOpen() && isShortOfDescriptors(errno) && !m_files.isEmpty()) {
        settle();
        opened = DiskCalls::open(parent.descriptor(), name, flags, mode);
    }
    return opened;
}

void FolderWriter::settleName(const OpenFolder& parent, const char* name) {
    if (m_files.mayHold(parent, name)) {
        settle();
    }
}

void FolderWriter::clearPlace(const OpenFolder& parent, const char* name) {
    // A folder that looks empty may have files to come.
    settle();
    DiskCalls::clearPlace(parent.descriptor(), name);
}

void FolderWriter::sendFile(const MemberPath& path, const std::string& name,
                            std::span<const std::uint8_t> contents, const ModeAndTime& modeAndTime) {
    const SharedFolder& parent = openParent(path, true);
    if (m_files.mayHoldBeside(*parent, path.leaf())) {
        settle();
    }
    if (!m_files.add(parent, path.leaf(), name, contents, modeAndTime)) {
        settle();
    }
}

void FolderWriter::settle() {
    m_files.settle([this](const std::string& name, const std::string& reason) {
        if (m_fileFailed) {
            m_fileFailed(name, reason);
        }
    });
}

void FolderWriter::makeFolder(const MemberPath& path, const ModeAndTime& modeAndTime) {
    const SharedFolder& folder = openSettled(path, true);
    const int parent = folder->descriptor();
    const char* const name = path.leaf();
    if (!DiskCalls::makeFolder(parent, name, S_IRWXU)) {
        DiskCalls::throwUnless(errno == EEXIST);
        struct stat status {};
        DiskCalls::throwUnless(DiskCalls::status(parent, name, status));
        if (S_ISDIR(status.st_mode)) {
            DiskCalls::throwUnless(DiskCalls::isOpenToOwner(parent, name, status));
        } else {
            clearPlace(*folder, name);
            DiskCalls::throwUnless(DiskCalls::makeFolder(parent, name, S_IRWXU));
        }
    }
    m_postponed.add(path, {modeAndTime, S_IFDIR});
}

void FolderWriter::makeSymbolicLink(const MemberPath& path, const std::string& target,
                                    const timespec& modified) {
    const SharedFolder& folder = openSettled(path, true);
    const int parent = folder->descriptor();
    const auto make = [&] { return ::symlinkat(target.c_str(), parent, path.leaf()); };
    if (!DiskCalls::succeeds(make)) {
        DiskCalls::throwUnless(errno == EEXIST);
        clearPlace(*folder, path.leaf());
        DiskCalls::throwUnless(DiskCalls::succeeds(make));
    }
    const timespec times[2] = {modified, modified};
    DiskCalls::throwUnless(
        DiskCalls::succeeds([&] { return ::utimensat(parent, path.leaf(), times, AT_SYMLINK_NOFOLLOW); }));
}

ZPKFileDescriptor FolderWriter::makeFile(const MemberPath& path) {
    const SharedFolder& parent = openSettled(path, true);
    ZPKFileDescriptor file = open(*parent, path.leaf(), kNewFileFlags, 0600);
    if (!file.isOpen() && errno == EEXIST) {
        clearPlace(*parent, path.leaf());
        file = open(*parent, path.leaf(), kNewFileFlags, 0600);
    }
    DiskCalls::throwUnless(file.isOpen());
    return file;
}

void FolderWriter::closeFile(ZPKFileDescriptor file, const ModeAndTime& modeAndTime) {
    OpenFolder::setModeAndTime(file.get(), modeAndTime);
    DiskCalls::throwUnless(file.close());
}

void FolderWriter::closeFileForNow(ZPKFileDescriptor file, const MemberPath& path,
                                   const ModeAndTime& modeAndTime) {
    // The process's mask may have made it a file that cannot be opened again.
    DiskCalls::throwUnless(DiskCalls::succeeds([&] { return ::fchmod(file.get(), S_IRUSR | S_IWUSR); }));
    DiskCalls::throwUnless(file.close());
    m_postponed.add(path, {modeAndTime, S_IFREG});
}

void FolderWriter::makeHardLink(const MemberPath& path, const MemberPath& target,
                                const FileIdentity& expected) {
    const SharedFolder targetFolder = openSettled(target, false);
    const int targetParent = targetFolder->descriptor();
    std::optional<FileIdentity> found = DiskCalls::identity(targetParent, target.leaf());
    DiskCalls::throwUnless(found.has_value());
    throwUnlessSame(*found, expected);
    const SharedFolder& folder = openSettled(path, true);
    const int parent = folder->descriptor();
    found = DiskCalls::identity(parent, path.leaf());
    if (found == expected) {
        return;
    }
    if (found) {
        clearPlace(*folder, path.leaf());
    }
    DiskCalls::throwUnless(
        DiskCalls::succeeds([&] { return ::linkat(targetParent, target.leaf(), parent, path.leaf(), 0); }));
    // Only now is it certain what was linked.
    if (DiskCalls::identity(parent, path.leaf()) != expected) {
        DiskCalls::remove(parent, path.leaf(), 0);
        throw MemberFailure("the file that it is a link to has been replaced");
    }
}

ZPKFileDescriptor FolderWriter::reopenFile(const MemberPath& path, const FileIdentity& expected) {
    const SharedFolder& parent = openSettled(path, false);
    ZPKFileDescriptor file = open(*parent, path.leaf(), O_WRONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    struct stat found {};
    DiskCalls::throwUnless(file.isOpen() && DiskCalls::status(file.get(), found));
    throwUnlessSame(FileIdentity(found), expected);
    DiskCalls::throwUnless(DiskCalls::succeeds([&] { return ::ftruncate(file.get(), 0); }));
    return file;
}

std::optional<FileIdentity> FolderWriter::identify(const MemberPath& path) {
    try {
        return DiskCalls::identity(openSettled(path, false)->descriptor(), path.leaf());
    } catch (const MemberFailure&) {
        return std::nullopt;
    }
}

ZPKFileDescriptor FolderWriter::locate(const MemberPath& path) {
    const SharedFolder& parent = openSettled(path, false);
    ZPKFileDescriptor found = open(*parent, path.leaf(), O_PATH | O_NOFOLLOW | O_CLOEXEC);
    DiskCalls::throwUnless(found.isOpen());
    return found;
}

std::string FolderWriter::readFile(const MemberPath& path, std::size_t limit) {
    const SharedFolder& parent = openSettled(path, false);
    const ZPKFileDescriptor file = open(*parent, path.leaf(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
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
    const int parent = openSettled(path, false)->descriptor();
    DiskCalls::throwUnless(DiskCalls::remove(parent, path.leaf(), 0) || errno == ENOENT);
    m_postponed.forget(path);
}

void FolderWriter::finish() {
    settle();
    m_postponed.applyAll();
}

void FolderWriter::applyOrTell(const MemberPath& path, const PostponedModes::Item& item) {
    try {
        // A file made later would change its folder's time, or find it shut.
        settle();
        apply(path, item);
    } catch (const WritingEnded&) {
        throw;
    } catch (const std::exception& failure) {
        if (m_failed) {
            m_failed(path.text(), failure.what());
        }
    }
}

void FolderWriter::apply(const MemberPath& path, const PostponedModes::Item& item) {
    const std::optional<FileIdentity> found = identify(path);
    if (!found || found->type != item.type) {
        return;  // A later member took its place.
    }
    const int flags = item.type == S_IFDIR ? kFolderFlags : O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
    const ZPKFileDescriptor opened =
        DiskCalls::open(openParent(path, false)->descriptor(), path.leaf(), flags);
    DiskCalls::throwUnless(opened.isOpen());
    OpenFolder::setModeAndTime(opened.get(), item.modeAndTime);
}

}  // namespace zpk_archive
