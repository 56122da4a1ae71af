// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Platform/ZPKFolderWalker.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <span>
#include <utility>

#include "Base/ZPKDescriptorIO.h"

namespace {

// Deeper levels give up their descriptor on the way down and are regained through "..".
constexpr std::size_t kLevelsKeptOpen = 32;

constexpr std::size_t kEntryBlock = std::size_t{32} * 1024;

constexpr int kFolderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;

bool readAttributes(int descriptor, struct statx& outAttributes) {
    return ::statx(descriptor, "", AT_EMPTY_PATH, STATX_BASIC_STATS, &outAttributes) == 0;
}

bool isSameFolder(const struct statx& one, const struct statx& other) {
    return one.stx_ino == other.stx_ino && one.stx_dev_major == other.stx_dev_major &&
           one.stx_dev_minor == other.stx_dev_minor;
}

/// Opens a folder of this user's that its mode closes to everybody. The mode is changed through a
/// descriptor of the folder itself, so that a link put in its place meanwhile leads nowhere.
ZPKFileDescriptor openClosedFolder(int parent, const std::string& name) {
    const ZPKFileDescriptor place(
        ::openat(parent, name.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct statx attributes;
    if (!place.isOpen() || !readAttributes(place.get(), attributes)) {
        return {};
    }
    if (ZPKFolderWalker::isMounted(attributes)) {
        errno = EBUSY;
        return {};
    }
    if (!ZPKFolderWalker::giveToOwner(place.get())) {
        return {};
    }
    return ZPKFileDescriptor(::openat(place.get(), ".", kFolderFlags));
}

unsigned char typeOf(int folder, const struct dirent64& entry) {
    if (entry.d_type != DT_UNKNOWN) {
        return entry.d_type;
    }
    struct stat attributes;
    if (::fstatat(folder, entry.d_name, &attributes, AT_SYMLINK_NOFOLLOW) != 0) {
        return DT_UNKNOWN;
    }
    return static_cast<unsigned char>(IFTODT(attributes.st_mode));
}

/// Gives all that the folder holds, from its start on, in the blocks that the system gives; false when
/// reading failed half-way.
template <typename Take>
bool readBlocks(int folder, const Take& take) {
    if (::lseek(folder, 0, SEEK_SET) != 0) {
        return false;
    }
    // A stream of the library's would take a descriptor of its own, and there may be none left.
    alignas(struct dirent64) char block[kEntryBlock];
    for (;;) {
        const ssize_t size =
            ZPKDescriptorIO::retry([&] { return ::getdents64(folder, block, sizeof(block)); });
        if (size <= 0) {
            return size == 0;
        }
        take(std::span<const char>(block, static_cast<std::size_t>(size)));
    }
}

/// The next entry but the folder itself and its parent, taken off the front of a block; null at the end.
const struct dirent64* takeEntry(std::span<const char>& block) {
    while (!block.empty()) {
        const auto* const entry = reinterpret_cast<const struct dirent64*>(block.data());
        block = block.subspan(entry->d_reclen);
        if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0) {
            return entry;
        }
    }
    return nullptr;
}

}  // namespace

bool ZPKFolderWalker::giveToOwner(int folder) {
    const std::string handle = "/proc/self/fd/" + std::to_string(folder);
    return ::chmod(handle.c_str(), S_IRWXU) == 0;
}

bool ZPKFolderWalker::isMounted(const struct statx& attributes) {
    return (attributes.stx_attributes & attributes.stx_attributes_mask & STATX_ATTR_MOUNT_ROOT) != 0;
}

ZPKFileDescriptor ZPKFolderWalker::openFolder(int parent, const std::string& name) {
    ZPKFileDescriptor folder(::openat(parent, name.c_str(), kFolderFlags));
    if (!folder.isOpen() && (errno == EMFILE || errno == ENFILE) && giveUpUpperLevels()) {
        folder = ZPKFileDescriptor(::openat(parent, name.c_str(), kFolderFlags));
    }
    if (!folder.isOpen() && errno == EACCES && m_access == Access::ForRemoval) {
        return openClosedFolder(parent, name);
    }
    return folder;
}

bool ZPKFolderWalker::giveUpUpperLevels() {
    bool isAnyGivenUp = false;
    for (std::size_t level = 0; level + 1 < m_levels.size(); ++level) {
        isAnyGivenUp = isAnyGivenUp || m_levels[level].descriptor.isOpen();
        static_cast<void>(m_levels[level].descriptor.close());
    }
    return isAnyGivenUp;
}

bool ZPKFolderWalker::isInsideFolder(const struct statx& attributes) const {
    return std::any_of(m_levels.begin(), m_levels.end(),
                       [&](const Level& level) { return isSameFolder(level.attributes, attributes); });
}

bool ZPKFolderWalker::enterAt(int parent, const std::string& name) {
    Level level;
    level.descriptor = openFolder(parent, name);
    if (!level.descriptor.isOpen() || !readAttributes(level.descriptor.get(), level.attributes)) {
        return false;
    }
    // A damaged file system can hold itself.
    if (isInsideFolder(level.attributes)) {
        errno = ELOOP;
        return false;
    }
    if (m_access == Access::ForRemoval) {
        if (isMounted(level.attributes)) {
            errno = EBUSY;
            return false;
        }
        if ((level.attributes.stx_mode & S_IRWXU) != S_IRWXU) {
            // Without success the removal of what the folder holds fails, and says so.
            static_cast<void>(::fchmod(level.descriptor.get(), S_IRWXU));
        }
    }
    level.name = name;
    if (m_levels.size() > kLevelsKeptOpen) {
        static_cast<void>(m_levels.back().descriptor.close());
    }
    m_levels.push_back(std::move(level));
    return true;
}

bool ZPKFolderWalker::enter(const std::string& name) {
    return enterAt(descriptor(), name);
}

bool ZPKFolderWalker::leave() {
    const Level left = std::move(m_levels.back());
    m_levels.pop_back();
    if (m_levels.empty() || m_levels.back().descriptor.isOpen()) {
        return true;
    }
    ZPKFileDescriptor parent(::openat(left.descriptor.get(), "..", kFolderFlags));
    struct statx attributes;
    if (!parent.isOpen() || !readAttributes(parent.get(), attributes)) {
        m_levels.clear();
        return false;
    }
    if (!isSameFolder(attributes, m_levels.back().attributes)) {
        m_levels.clear();
        errno = ESTALE;
        return false;
    }
    m_levels.back().descriptor = std::move(parent);
    return true;
}

std::string ZPKFolderWalker::pathBelowStart() const {
    std::string path;
    for (std::size_t level = 1; level < m_levels.size(); ++level) {
        path += path.empty() ? m_levels[level].name : '/' + m_levels[level].name;
    }
    return path;
}

bool ZPKFolderWalker::visitEntries(
    const std::function<void(const char* name, unsigned char type)>& visit) const {
    const int folder = descriptor();
    return readBlocks(folder, [&](std::span<const char> block) {
        while (const struct dirent64* entry = takeEntry(block)) {
            visit(entry->d_name, typeOf(folder, *entry));
        }
    });
}

bool ZPKFolderWalker::readEntries() {
    std::vector<char>& entries = m_levels.back().entries;
    return readBlocks(descriptor(), [&](std::span<const char> block) {
        entries.insert(entries.end(), block.begin(), block.end());
    });
}

const ZPKFolderWalker::Entry* ZPKFolderWalker::nextEntry() {
    Level& level = m_levels.back();
    std::span<const char> left = std::span(std::as_const(level.entries)).subspan(level.given);
    const struct dirent64* const entry = takeEntry(left);
    level.given = level.entries.size() - left.size();
    if (entry == nullptr) {
        return nullptr;
    }
    m_entry = {entry->d_name, typeOf(descriptor(), *entry)};
    return &m_entry;
}
