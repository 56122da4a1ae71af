// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/OpenFolder.h"

#include <sys/stat.h>

#include <utility>

#include "Archive/DiskCalls.h"

namespace zpk_archive {

namespace {

constexpr mode_t kPermissions = 07777;

/// Tells a mode in one half of a word from none.
constexpr std::uint32_t kIsMode = 0x8000;
constexpr unsigned kHalf = 16;

void setMode(int thing, mode_t permissions) {
    DiskCalls::throwUnless(DiskCalls::succeeds([&] { return ::fchmod(thing, permissions); }));
}

void setTime(int thing, const timespec& modified) {
    const timespec times[2] = {modified, modified};
    DiskCalls::throwUnless(DiskCalls::succeeds([&] { return ::futimens(thing, times); }));
}

}  // namespace

OpenFolder::OpenFolder(ZPKFileDescriptor descriptor) : m_descriptor(std::move(descriptor)) {
    struct stat status {};
    DiskCalls::throwUnless(DiskCalls::status(m_descriptor.get(), status));
    m_identity = FileIdentity(status);
}

bool OpenFolder::hasExactly(int file, mode_t permissions) {
    const std::uint32_t wanted = permissions | kIsMode;
    const std::uint32_t known = m_exactModes.load(std::memory_order_relaxed);
    if ((known & 0xffff) == wanted || known >> kHalf == wanted) {
        return true;
    }
    struct stat status {};
    if (!DiskCalls::status(file, status) || (status.st_mode & kPermissions) != permissions) {
        return false;
    }
    m_exactModes.store(known << kHalf | wanted, std::memory_order_relaxed);
    return true;
}

void OpenFolder::giveModeAndTime(int file, const ModeAndTime& modeAndTime) {
    if (!hasExactly(file, modeAndTime.permissions)) {
        setMode(file, modeAndTime.permissions);
    }
    setTime(file, modeAndTime.modified);
}

void OpenFolder::setModeAndTime(int thing, const ModeAndTime& modeAndTime) {
    // The mode first: it may end the permission to nothing, while times need ownership alone.
    setMode(thing, modeAndTime.permissions);
    setTime(thing, modeAndTime.modified);
}

}  // namespace zpk_archive
