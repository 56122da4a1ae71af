// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Platform/ZPKHeldFolder.h"

#include <fcntl.h>

#include <atomic>
#include <cassert>
#include <cerrno>
#include <utility>

#include "Base/ZPKPath.h"

namespace {

std::atomic<const ZPKHeldFolder*> g_held{nullptr};

}  // namespace

ZPKHeldFolder::ZPKHeldFolder(const std::string& path, ZPKFileDescriptor folder)
    : m_path(ZPKPath::withoutTrailingSeparators(path)), m_folder(std::move(folder)) {
    const ZPKHeldFolder* const before = g_held.exchange(this);
    assert(before == nullptr);
    static_cast<void>(before);
}

ZPKHeldFolder::~ZPKHeldFolder() {
    g_held = nullptr;
}

bool ZPKHeldFolder::isInItsPlace() const {
    struct stat there;
    if (::lstat(m_path.c_str(), &there) != 0) {
        return errno != ENOENT && errno != ENOTDIR;
    }
    struct stat own;
    return ::fstat(descriptor(), &own) != 0 || (there.st_dev == own.st_dev && there.st_ino == own.st_ino);
}

const char* ZPKHeldFolder::nameBelow(const std::string& path) const {
    if (!path.starts_with(m_path)) {
        return nullptr;
    }
    std::size_t at = m_path.size();
    if (at < path.size() && path[at] != '/') {
        return nullptr;
    }
    // A name with a separator in front would begin at the root.
    at = path.find_first_not_of('/', at);
    return at == std::string::npos ? "." : path.c_str() + at;
}

ZPKHeldFolder::Place ZPKHeldFolder::placeOf(const std::string& path) {
    const ZPKHeldFolder* const held = g_held;
    const char* const name = held == nullptr ? nullptr : held->nameBelow(path);
    return name == nullptr ? Place{AT_FDCWD, path.c_str()} : Place{held->descriptor(), name};
}

bool ZPKHeldFolder::look(const std::string& path, struct stat& outAttributes, int flags) {
    const Place place = placeOf(path);
    return ::fstatat(place.folder, place.name, &outAttributes, flags) == 0;
}

const ZPKHeldFolder* ZPKHeldFolder::at(const std::string& path) {
    const ZPKHeldFolder* const held = g_held;
    return held != nullptr && held->m_path == ZPKPath::withoutTrailingSeparators(path) ? held : nullptr;
}

bool ZPKHeldFolder::isToBeFoundAt(const std::string& path) {
    const ZPKHeldFolder* const held = g_held;
    return held == nullptr || held->nameBelow(path) == nullptr || held->isInItsPlace();
}
