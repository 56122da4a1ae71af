// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Base/ZPKDescriptorIO.h"

#include <unistd.h>

#include <cerrno>

namespace {

constexpr std::size_t kFirstPiece = std::size_t{16} * 1024;

/// Moves `size` bytes by steps of `step(done, left)`, which gives what it moved, 0 at the end or -1.
template <typename Step>
ssize_t moveWhole(std::size_t size, Step step) {
    std::size_t done = 0;
    while (done < size) {
        const ssize_t count = ZPKDescriptorIO::retry([&] { return step(done, size - done); });
        if (count < 0) {
            return -1;
        }
        if (count == 0) {
            break;
        }
        done += static_cast<std::size_t>(count);
    }
    return static_cast<ssize_t>(done);
}

/// A write that takes nothing and names no reason would be tried for ever.
bool isWhole(ssize_t written, std::size_t size) {
    if (written >= 0 && static_cast<std::size_t>(written) < size) {
        errno = ENOSPC;
        return false;
    }
    return written >= 0;
}

}  // namespace

bool ZPKDescriptorIO::wasInterrupted() {
    return errno == EINTR;
}

ssize_t ZPKDescriptorIO::readSome(int descriptor, void* buffer, std::size_t size) {
    return retry([&] { return ::read(descriptor, buffer, size); });
}

ssize_t ZPKDescriptorIO::readWhole(int descriptor, void* buffer, std::size_t size) {
    return moveWhole(size, [&](std::size_t done, std::size_t left) {
        return ::read(descriptor, static_cast<char*>(buffer) + done, left);
    });
}

ssize_t ZPKDescriptorIO::readWholeAt(int descriptor, void* buffer, std::size_t size, off_t offset) {
    return moveWhole(size, [&](std::size_t done, std::size_t left) {
        return ::pread(descriptor, static_cast<char*>(buffer) + done, left,
                       offset + static_cast<off_t>(done));
    });
}

std::optional<std::string> ZPKDescriptorIO::readToEnd(int descriptor, std::size_t limit) {
    std::string bytes;
    for (std::size_t piece = kFirstPiece;; piece *= 2) {
        const std::size_t before = bytes.size();
        // One byte over the limit tells a file of just that size from a larger one.
        const std::size_t room = limit - before;
        bytes.resize(before + (piece <= room ? piece : room + 1));
        const ssize_t count = readWhole(descriptor, bytes.data() + before, bytes.size() - before);
        if (count < 0) {
            return std::nullopt;
        }
        const bool isAtEnd = before + static_cast<std::size_t>(count) < bytes.size();
        bytes.resize(before + static_cast<std::size_t>(count));
        if (bytes.size() > limit) {
            errno = EFBIG;
            return std::nullopt;
        }
        if (isAtEnd) {
            return bytes;
        }
    }
}

bool ZPKDescriptorIO::writeWhole(int descriptor, const void* bytes, std::size_t size) {
    return isWhole(moveWhole(size,
                             [&](std::size_t done, std::size_t left) {
                                 return ::write(descriptor, static_cast<const char*>(bytes) + done, left);
                             }),
                   size);
}

bool ZPKDescriptorIO::writeWholeAt(int descriptor, const void* bytes, std::size_t size, off_t offset) {
    return isWhole(moveWhole(size,
                             [&](std::size_t done, std::size_t left) {
                                 return ::pwrite(descriptor, static_cast<const char*>(bytes) + done, left,
                                                 offset + static_cast<off_t>(done));
                             }),
                   size);
}
