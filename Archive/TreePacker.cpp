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

#include "Archive/CpioWriter.h"
#include "Archive/DiskCalls.h"
#include "Archive/ErrorSink.h"
#include "Archive/ExtendedAttributes.h"
#include "Archive/Failure.h"
#include "Archive/OutputFile.h"
#include "Base/ZPKDescriptorIO.h"

namespace zpk_archive {

namespace {

constexpr std::size_t kReadSize = std::size_t{1} << 20;
constexpr mode_t kAppleDoubleMode = S_IFREG | 0644;
constexpr int kOpenFlags = O_RDONLY | O_NONBLOCK | O_CLOEXEC;

struct FolderCloser {
    void operator()(DIR* folder) const { ::closedir(folder); }
};

bool canBePacked(mode_t mode) {
    return S_ISREG(mode) || S_ISDIR(mode) || S_ISLNK(mode);
}

/// The names that all folders on the way down may keep, in bytes; beyond it the upper ones are read again.
constexpr std::size_t kNamesOnTheWay = std::size_t{16} << 20;

void readNames(int folder, ZPKNameBatch& names) {
    ZPKFileDescriptor copy(ZPKDescriptorIO::retry([folder] { return ::fcntl(folder, F_DUPFD_CLOEXEC, 0); }));
    const std::unique_ptr<DIR, FolderCloser> opened(DiskCalls::startListing(copy));
    if (!opened) {
        throw MemberFailure::ofSystem(errno);
    }
    ::rewinddir(opened.get());
    names.begin();
    while (const dirent* const item = DiskCalls::nextIn(opened.get())) {
        const std::string_view name = item->d_name;
        if (name != "." && name != "..") {
            names.offer(name);
        }
    }
    if (errno != 0) {
        throw MemberFailure::ofSystem(errno);
    }
    names.end();
}

}  // namespace

ZPKFileDescriptor TreePacker::openSource(const std::string& path) {
    ZPKFileDescriptor source(ZPKDescriptorIO::retry([&] { return ::open(path.c_str(), kOpenFlags); }));
    struct stat status {};
    if (!source.isOpen() || !DiskCalls::status(source.get(), status)) {
        throw ArchiveFailure::ofSystem(errno);
    }
    if (!S_ISDIR(status.st_mode) && !S_ISREG(status.st_mode)) {
        throw ArchiveFailure("neither a folder nor a file");
    }
    return source;
}

TreePacker::TreePacker(CpioWriter& writer, const OutputFile& output, ErrorSink& sink,
                       std::optional<std::int64_t> time, std::function<void(std::uint64_t)> packed)
    : m_writer(writer),
      m_output(output),
      m_sink(sink),
      m_time(time),
      m_packed(std::move(packed)),
      m_buffer(kReadSize) {}

void TreePacker::pack(ZPKFileDescriptor source, const std::string& name) {
    m_name = name;
    packSource(std::move(source));
    while (!m_way.empty()) {
        OpenFolder& folder = m_way.back();
        if (folder.leaves.isEmpty() && folder.leaves.isPart()) {
            readMore(folder);
        }
        if (folder.leaves.isEmpty()) {
            m_way.pop_back();
        } else {
            packNext(folder);
        }
    }
}

void TreePacker::packSource(ZPKFileDescriptor source) {
    try {
        struct stat status {};
        if (!DiskCalls::status(source.get(), status)) {
            throw MemberFailure::ofSystem(errno);
        }
        packOpened(std::move(source), status);
    } catch (const MemberFailure& failure) {
        m_sink.error(m_name, failure.what());
    }
}

void TreePacker::packNext(OpenFolder& folder) {
    const std::string leaf = folder.leaves.take();
    m_name.resize(folder.nameLength);
    m_name.append("/").append(leaf);
    try {
        packThing(folder.descriptor.get(), leaf);
    } catch (const MemberFailure& failure) {
        m_sink.error(m_name, failure.what());
    }
}

void TreePacker::readMore(OpenFolder& folder) {
    m_name.resize(folder.nameLength);
    try {
        readNames(folder.descriptor.get(), folder.leaves);
    } catch (const MemberFailure& failure) {
        folder.leaves.begin();
        m_sink.error(m_name, failure.what());
    }
}

void TreePacker::enter(ZPKFileDescriptor folder) {
    OpenFolder opened{std::move(folder), m_name.size(), ZPKNameBatch()};
    readNames(opened.descriptor.get(), opened.leaves);
    std::size_t memory = opened.leaves.memory();
    for (const OpenFolder& upper : m_way) {
        memory += upper.leaves.memory();
    }
    if (memory > kNamesOnTheWay) {
        std::for_each(m_way.begin(), m_way.end(), [](OpenFolder& upper) { upper.leaves.forget(); });
    }
    m_way.push_back(std::move(opened));
}

void TreePacker::packThing(int parent, const std::string& leaf) {
    struct stat status {};
    if (ZPKDescriptorIO::retry(
            [&] { return ::fstatat(parent, leaf.c_str(), &status, AT_SYMLINK_NOFOLLOW); }) != 0) {
        throw MemberFailure::ofSystem(errno);
    }
    if (!canBePacked(status.st_mode)) {
        throw MemberFailure("devices, FIFOs and sockets are not packed");
    }
    if (S_ISLNK(status.st_mode)) {
        packSymbolicLink(parent, leaf, status);
        return;
    }
    if (m_output.isSelf(status)) {
        m_sink.warning(m_name, "the archive itself is left out");
        return;
    }
    ZPKFileDescriptor thing(
        ZPKDescriptorIO::retry([&] { return ::openat(parent, leaf.c_str(), kOpenFlags | O_NOFOLLOW); }));
    if (!thing.isOpen() || !DiskCalls::status(thing.get(), status)) {
        throw MemberFailure::ofSystem(errno);
    }
    packOpened(std::move(thing), status);
}

void TreePacker::packOpened(ZPKFileDescriptor thing, const struct stat& status) {
    const AttributeMap attributes = attributesOf(thing.get());
    Member member;
    member.name = m_name;
    member.size = S_ISREG(status.st_mode) ? status.st_size : 0;
    startMember(member, status);
    if (S_ISREG(status.st_mode)) {
        packData(thing.get(), status.st_size);
    }
    if (!attributes.empty()) {
        packAttributes(attributes, status);
    }
    if (S_ISDIR(status.st_mode)) {
        enter(std::move(thing));
    }
}

AttributeMap TreePacker::attributesOf(int thing) {
    try {
        return readAttributes(thing);
    } catch (const MemberFailure& failure) {
        m_sink.error(m_name, std::string("its extended attributes cannot be read: ") + failure.what());
        return {};
    }
}

void TreePacker::startMember(Member& member, const struct stat& status) {
    member.mode = status.st_mode;
    member.modifiedSeconds = m_time.value_or(std::max<std::int64_t>(status.st_mtim.tv_sec, 0));
    // A folder's count says nothing of names, and would make readers look for the others.
    if (!S_ISDIR(status.st_mode) && status.st_nlink > 1) {
        numberLink(member, status);
    }
    m_writer.startMember(member);
}

void TreePacker::numberLink(Member& member, const struct stat& status) {
    if (!m_links) {
        m_links = m_way.empty() ? LinkCounts() : LinkCounts::ofTree(m_way.front().descriptor.get());
    }
    // The machine's own inode numbers would differ from run to run and do not fit the header.
    if (const LinkCounts::File* const file = m_links->find(FileIdentity(status))) {
        member.inode = file->number;
        member.linkCount = file->names;
    }
}

void TreePacker::packSymbolicLink(int parent, const std::string& leaf, const struct stat& status) {
    char* const bytes = reinterpret_cast<char*>(m_buffer.data());
    const ssize_t length =
        ZPKDescriptorIO::retry([&] { return ::readlinkat(parent, leaf.c_str(), bytes, m_buffer.size()); });
    if (length < 0) {
        throw MemberFailure::ofSystem(errno);
    }
    Member member;
    member.name = m_name;
    member.symbolicLinkTarget.assign(bytes, static_cast<std::size_t>(length));
    startMember(member, status);
}

void TreePacker::packData(int file, std::int64_t size) {
    for (std::int64_t done = 0; done < size;) {
        const auto wanted = std::min<std::int64_t>(size - done, static_cast<std::int64_t>(m_buffer.size()));
        const ssize_t got =
            ZPKDescriptorIO::readSome(file, m_buffer.data(), static_cast<std::size_t>(wanted));
        if (got <= 0) {
            m_sink.error(m_name,
                         got < 0 ? ZPKFailure::systemReason(errno) : "it became shorter while it was read");
            padWithZeros(size - done);
            return;
        }
        m_writer.writeData({m_buffer.data(), static_cast<std::size_t>(got)});
        done += got;
        if (m_packed) {
            m_packed(static_cast<std::uint64_t>(got));
        }
    }
    if (ZPKDescriptorIO::readSome(file, m_buffer.data(), 1) > 0) {
        m_sink.error(m_name, "it became longer while it was read");
    }
}

void TreePacker::padWithZeros(std::int64_t count) {
    std::fill(m_buffer.begin(), m_buffer.end(), std::uint8_t{0});
    while (count > 0) {
        const auto piece = std::min<std::int64_t>(count, static_cast<std::int64_t>(m_buffer.size()));
        m_writer.writeData({m_buffer.data(), static_cast<std::size_t>(piece)});
        count -= piece;
    }
}

void TreePacker::packAttributes(const AttributeMap& attributes, const struct stat& status) {
    const std::string contents = encodeAppleDouble(attributes);
    const std::size_t leafStart = m_name.rfind('/') + 1;
    Member member;
    member.name = std::string(m_name).insert(leafStart, kAppleDoublePrefix);
    if (contents.size() > kAppleDoubleLimit || member.name.size() - leafStart > NAME_MAX ||
        member.name.size() > CpioWriter::kNameLimit) {
        m_sink.error(m_name, "its extended attributes are too large, or its name too long to carry them");
        return;
    }
    struct stat own = status;
    own.st_mode = kAppleDoubleMode;
    own.st_nlink = 1;
    member.size = static_cast<std::int64_t>(contents.size());
    startMember(member, own);
    m_writer.writeData({reinterpret_cast<const std::uint8_t*>(contents.data()), contents.size()});
}

}  // namespace zpk_archive
