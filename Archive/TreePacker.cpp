// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/TreePacker.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <memory>

#include "Archive/Archive.h"
#include "Archive/CpioWriter.h"
#include "Archive/ExtendedAttributes.h"
#include "Archive/Failure.h"
#include "Archive/OutputFile.h"
#include "Base/ZPKDescriptorIO.h"

namespace zpk_archive {

namespace {

constexpr std::size_t kReadSize = std::size_t{1} << 20;
constexpr mode_t kAppleDoubleMode = S_IFREG | 0644;
constexpr int kOpenFlags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;

struct FolderCloser {
    void operator()(DIR* folder) const { ::closedir(folder); }
};

bool isWritableType(mode_t mode) {
    return S_ISREG(mode) || S_ISDIR(mode) || S_ISLNK(mode);
}

std::string appleDoubleName(const std::string& name) {
    std::size_t leaf = name.rfind('/') + 1;
    return name.substr(0, leaf) + "._" + name.substr(leaf);
}

}  // namespace

TreePacker::TreePacker(CpioWriter& writer, const OutputFile& output, ErrorSink& sink)
    : m_writer(writer), m_output(output), m_sink(sink), m_buffer(kReadSize) {}

void TreePacker::pack(const std::string& source, const std::string& name) {
    // The source itself may be a link; what it leads to is meant.
    ZPKFileDescriptor thing(::open(source.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    struct stat status {};
    if (!thing.isOpen() || ::fstat(thing.get(), &status) != 0) {
        throw ArchiveFailure::ofSystem(errno);
    }
    if (!S_ISDIR(status.st_mode) && !S_ISREG(status.st_mode)) {
        throw ArchiveFailure("neither a folder nor a file");
    }
    try {
        packOpened(thing, name, status);
    } catch (const MemberFailure& failure) {
        m_sink.error(name, failure.what());
    }
}

void TreePacker::packThing(int parent, const std::string& leaf, const std::string& name) {
    struct stat status {};
    if (::fstatat(parent, leaf.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
        throw MemberFailure::ofSystem(errno);
    }
    if (!isWritableType(status.st_mode)) {
        throw MemberFailure("devices, FIFOs and sockets are not packed");
    }
    if (S_ISLNK(status.st_mode)) {
        packSymbolicLink(parent, leaf, name, status);
        return;
    }
    if (m_output.isSelf(status)) {
        m_sink.warning(name, "the archive itself is left out");
        return;
    }
    ZPKFileDescriptor thing(::openat(parent, leaf.c_str(), kOpenFlags));
    if (!thing.isOpen() || ::fstat(thing.get(), &status) != 0) {
        throw MemberFailure::ofSystem(errno);
    }
    packOpened(thing, name, status);
}

void TreePacker::packOpened(const ZPKFileDescriptor& thing, const std::string& name,
                            const struct stat& status) {
    AttributeMap attributes;
    try {
        attributes = readAttributes(thing.get());
    } catch (const MemberFailure& failure) {
        m_sink.error(name, std::string("its extended attributes cannot be read: ") + failure.what());
    }
    Member member;
    member.name = name;
    member.size = S_ISREG(status.st_mode) ? status.st_size : 0;
    startMember(member, status);
    if (S_ISREG(status.st_mode)) {
        packData(thing.get(), name, status.st_size);
    }
    if (!attributes.empty()) {
        packAttributes(attributes, name, status);
    }
    if (S_ISDIR(status.st_mode)) {
        packFolder(thing.get(), name);
    }
}

void TreePacker::startMember(Member& member, const struct stat& status) {
    std::int64_t inode = 0;
    member.mode = status.st_mode;
    member.modifiedSeconds = std::max<std::int64_t>(status.st_mtim.tv_sec, 0);
    // A folder's count says nothing of names, and would make readers look for the others.
    bool severalNames = !S_ISDIR(status.st_mode) && status.st_nlink > 1;
    if (severalNames) {
        auto next = static_cast<std::int64_t>(m_inodes.size()) + 1;
        inode = m_inodes.try_emplace({status.st_dev, status.st_ino}, next).first->second;
        member.linkCount = static_cast<unsigned>(status.st_nlink);
    }
    m_writer.startMember(member, inode);
}

void TreePacker::packSymbolicLink(int parent, const std::string& leaf, const std::string& name,
                                  const struct stat& status) {
    ssize_t length =
        ::readlinkat(parent, leaf.c_str(), reinterpret_cast<char*>(m_buffer.data()), m_buffer.size());
    if (length < 0) {
        throw MemberFailure::ofSystem(errno);
    }
    Member member;
    member.name = name;
    member.symbolicLinkTarget.assign(reinterpret_cast<const char*>(m_buffer.data()),
                                     static_cast<std::size_t>(length));
    startMember(member, status);
}

void TreePacker::packData(int file, const std::string& name, std::int64_t size) {
    std::int64_t done = 0;
    while (done < size) {
        auto wanted = std::min<std::int64_t>(size - done, static_cast<std::int64_t>(m_buffer.size()));
        const ssize_t got =
            ZPKDescriptorIO::readSome(file, m_buffer.data(), static_cast<std::size_t>(wanted));
        if (got <= 0) {
            std::string reason =
                got < 0 ? ZPKFailure::systemReason(errno) : "it became shorter while it was read";
            m_sink.error(name, reason);
            padWithZeros(size - done);
            return;
        }
        m_writer.writeData({m_buffer.data(), static_cast<std::size_t>(got)});
        done += got;
    }
    if (ZPKDescriptorIO::readSome(file, m_buffer.data(), 1) > 0) {
        m_sink.error(name, "it became longer while it was read");
    }
}

void TreePacker::padWithZeros(std::int64_t count) {
    std::fill(m_buffer.begin(), m_buffer.end(), std::uint8_t{0});
    while (count > 0) {
        auto piece = std::min<std::int64_t>(count, static_cast<std::int64_t>(m_buffer.size()));
        m_writer.writeData({m_buffer.data(), static_cast<std::size_t>(piece)});
        count -= piece;
    }
}

void TreePacker::packAttributes(const AttributeMap& attributes, const std::string& name,
                                const struct stat& status) {
    std::string contents = encodeAppleDouble(attributes);
    std::string companion = appleDoubleName(name);
    if (contents.size() > kAppleDoubleLimit || companion.size() - companion.rfind('/') - 1 > NAME_MAX) {
        m_sink.error(name, "its extended attributes are too large, or its name too long to carry them");
        return;
    }
    struct stat own = status;
    own.st_mode = kAppleDoubleMode;
    own.st_nlink = 1;
    Member member;
    member.name = companion;
    member.size = static_cast<std::int64_t>(contents.size());
    startMember(member, own);
    m_writer.writeData({reinterpret_cast<const std::uint8_t*>(contents.data()), contents.size()});
}

std::vector<std::string> TreePacker::sortedNames(int folder) {
    int copy = ::fcntl(folder, F_DUPFD_CLOEXEC, 0);
    std::unique_ptr<DIR, FolderCloser> opened(copy < 0 ? nullptr : ::fdopendir(copy));
    if (!opened) {
        throw MemberFailure::ofSystem(errno);
    }
    std::vector<std::string> names;
    errno = 0;
    while (const dirent* item = ::readdir(opened.get())) {
        std::string name = item->d_name;
        if (name != "." && name != "..") {
            names.push_back(std::move(name));
        }
        errno = 0;
    }
    if (errno != 0) {
        throw MemberFailure::ofSystem(errno);
    }
    std::sort(names.begin(), names.end());
    return names;
}

void TreePacker::packFolder(int folder, const std::string& name) {
    for (const std::string& leaf : sortedNames(folder)) {
        std::string below = name + "/" + leaf;
        try {
            packThing(folder, leaf, below);
        } catch (const MemberFailure& failure) {
            m_sink.error(below, failure.what());
        }
    }
}

}  // namespace zpk_archive
