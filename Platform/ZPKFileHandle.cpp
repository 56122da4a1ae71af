// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Platform/ZPKFileHandle.h"

#include <fcntl.h>
#include <sys/sendfile.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <memory>

#include "Base/ZPKDescriptorIO.h"
#include "Platform/ZPKHeldFolder.h"

namespace {

/// A range that is still to be copied, from the source's offset to the destination's position.
struct PendingRange {
    int source;
    int destination;
    off_t offset;
    std::uint64_t length;

    void advance(ssize_t count) { length -= static_cast<std::uint64_t>(count); }
};

constexpr std::size_t kLargestKernelStep = std::size_t{1} << 30;
constexpr std::uint64_t kBoundary = std::uint64_t{64} * 1024;
constexpr std::size_t kBufferSize = std::size_t{256} * 1024;

/// Lets the kernel copy; stops at whatever it refuses, which the next way then copies or reports.
template <typename Step>
void copyInKernel(PendingRange& range, Step step) {
    while (range.length > 0) {
        const std::size_t wanted =
            static_cast<std::size_t>(std::min<std::uint64_t>(range.length, kLargestKernelStep));
        const ssize_t count = ZPKDescriptorIO::retry([&] { return step(wanted); });
        if (count <= 0) {
            return;
        }
        range.advance(count);
    }
}

ZPKOutcome copyThroughBuffer(PendingRange range, const ZPKFileHandle& source,
                             const ZPKFileHandle& destination) {
    if (range.length == 0) {
        return {};
    }
    const auto buffer = std::make_unique<char[]>(kBufferSize);
    while (range.length > 0) {
        const std::size_t wanted =
            static_cast<std::size_t>(std::min<std::uint64_t>(range.length, kBufferSize));
        const ssize_t count = ZPKDescriptorIO::readWholeAt(range.source, buffer.get(), wanted, range.offset);
        if (count < 0) {
            return ZPKFailure::ofSystem(source.path(), errno);
        }
        if (!ZPKDescriptorIO::writeWhole(range.destination, buffer.get(), static_cast<std::size_t>(count))) {
            return ZPKFailure::ofSystem(destination.path(), errno);
        }
        if (static_cast<std::size_t>(count) < wanted) {
            return ZPKFailure(source.path(), "Ends before it should");
        }
        range.offset += count;
        range.advance(count);
    }
    return {};
}

ZPKOutcome copyRange(const ZPKFileHandle& source, const ZPKFileHandle& destination, std::uint64_t offset,
                     std::uint64_t length) {
    PendingRange range{source.descriptor(), destination.descriptor(), static_cast<off_t>(offset), length};
    copyInKernel(range, [&range](std::size_t wanted) {
        return ::copy_file_range(range.source, &range.offset, range.destination, nullptr, wanted, 0);
    });
    // Not every file system pair can copy in place; the page cache can still be sent without a detour.
    copyInKernel(range, [&range](std::size_t wanted) {
        return ::sendfile(range.destination, range.source, &range.offset, wanted);
    });
    return copyThroughBuffer(range, source, destination);
}

}  // namespace

ZPKResult<ZPKFileHandle> ZPKFileHandle::adopt(ZPKFileDescriptor descriptor, const std::string& path) {
    struct stat attributes;
    if (!descriptor.isOpen() || ::fstat(descriptor.get(), &attributes) != 0) {
        return ZPKFailure::ofSystem(path, errno);
    }
    if (S_ISDIR(attributes.st_mode)) {
        return ZPKFailure::ofSystem(path, EISDIR);
    }
    if (!S_ISREG(attributes.st_mode)) {
        return ZPKFailure(path, "Not a regular file");
    }
    return ZPKFileHandle(std::move(descriptor), path, attributes);
}

ZPKResult<ZPKFileHandle> ZPKFileHandle::forReadingAtPath(const std::string& path) {
    const int flags = O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    const ZPKHeldFolder::Place place = ZPKHeldFolder::placeOf(path);
    return adopt(ZPKFileDescriptor(::openat(place.folder, place.name, flags)), path);
}

ZPKResult<ZPKFileHandle> ZPKFileHandle::forReadingAt(int folder, const std::string& name,
                                                     const std::string& path) {
    const int flags = O_RDONLY | O_NONBLOCK | O_NOCTTY | O_NOFOLLOW | O_CLOEXEC;
    return adopt(ZPKFileDescriptor(::openat(folder, name.c_str(), flags)), path);
}

ZPKResult<ZPKFileHandle> ZPKFileHandle::replacingFileAtPath(const std::string& path) {
    // Removing first keeps links and other names of the old file out of it.
    const ZPKHeldFolder::Place place = ZPKHeldFolder::placeOf(path);
    ::unlinkat(place.folder, place.name, 0);
    return newFileAt(place.folder, place.name, 0666, path);
}

ZPKResult<ZPKFileHandle> ZPKFileHandle::emptyingFileAtPath(const std::string& path) {
    // Not emptied while it is opened: it may be no regular file.
    const int flags = O_WRONLY | O_NONBLOCK | O_NOCTTY | O_NOFOLLOW | O_CLOEXEC;
    const ZPKHeldFolder::Place place = ZPKHeldFolder::placeOf(path);
    ZPKResult<ZPKFileHandle> file = adopt(ZPKFileDescriptor(::openat(place.folder, place.name, flags)), path);
    if (file && ::ftruncate(file->descriptor(), 0) != 0) {
        return ZPKFailure::ofSystem(path, errno);
    }
    return file;
}

ZPKResult<ZPKFileHandle> ZPKFileHandle::forWritingTo(int descriptor, const std::string& path) {
    return adopt(ZPKFileDescriptor(::fcntl(descriptor, F_DUPFD_CLOEXEC, 0)), path);
}

ZPKResult<ZPKFileHandle> ZPKFileHandle::newFileAt(int folder, const std::string& name, unsigned int mode,
                                                  const std::string& path) {
    const int flags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    return adopt(ZPKFileDescriptor(::openat(folder, name.c_str(), flags, mode)), path);
}

ZPKResult<std::string> ZPKFileHandle::contents(std::size_t limit) const {
    // The size is no bound by itself: the kernel's own files have none, and others may grow.
    if (size() > limit) {
        return ZPKFailure::ofSystem(m_path, EFBIG);
    }
    if (::lseek(descriptor(), 0, SEEK_SET) < 0) {
        return ZPKFailure::ofSystem(m_path, errno);
    }
    std::optional<std::string> bytes = ZPKDescriptorIO::readToEnd(descriptor(), limit);
    if (!bytes) {
        return ZPKFailure::ofSystem(m_path, errno);
    }
    return std::move(*bytes);
}

void ZPKFileHandle::reserve(std::uint64_t size) {
    if (size > 0) {
        // Saves a third of the time of a large copy on ext4.
        static_cast<void>(::fallocate(descriptor(), FALLOC_FL_KEEP_SIZE, 0, static_cast<off_t>(size)));
    }
}

ZPKOutcome ZPKFileHandle::append(const ZPKFileHandle& source, std::uint64_t offset, std::uint64_t length) {
    // In steps that begin where the page cache would begin its larger pages too, the kernel copies in
    // half the time.
    const off_t position = ::lseek(descriptor(), 0, SEEK_CUR);
    const std::uint64_t beyondBoundary = static_cast<std::uint64_t>(position < 0 ? 0 : position) % kBoundary;
    const std::uint64_t first = std::min(length, (kBoundary - beyondBoundary) % kBoundary);
    const ZPKOutcome outcome = copyRange(source, *this, offset, first);
    return outcome ? copyRange(source, *this, offset + first, length - first) : outcome;
}
