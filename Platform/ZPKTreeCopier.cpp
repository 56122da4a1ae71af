// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Platform/ZPKTreeCopier.h"

#include <fcntl.h>
#include <limits.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "Base/ZPKPath.h"
#include "Platform/ZPKFileHandle.h"

namespace {

constexpr mode_t kCopiedPermissions = 01777;

bool isSame(const struct stat& one, const struct stat& other) {
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

/// True when the open folder `inner` is, or lies anywhere below, the item described by `outer`.
bool liesIn(int inner, const struct stat& outer) {
    ZPKFileDescriptor current(::openat(inner, ".", O_PATH | O_DIRECTORY | O_CLOEXEC));
    struct stat attributes;
    while (current.isOpen() && ::fstat(current.get(), &attributes) == 0) {
        if (isSame(attributes, outer)) {
            return true;
        }
        ZPKFileDescriptor parent(::openat(current.get(), "..", O_PATH | O_DIRECTORY | O_CLOEXEC));
        struct stat above;
        if (!parent.isOpen() || ::fstat(parent.get(), &above) != 0 || isSame(above, attributes)) {
            return false;
        }
        current = std::move(parent);
    }
    return false;
}

/// Success, or the failure of the call just made.
ZPKOutcome outcomeOf(bool isDone, const std::string& path) {
    return isDone ? ZPKOutcome() : ZPKFailure::ofSystem(path, errno);
}

}  // namespace

ZPKOutcome ZPKTreeCopier::copy(const ZPKItemPlace& from, const ZPKItemPlace& to) {
    struct stat attributes;
    if (::fstatat(from.folder(), from.name().c_str(), &attributes, AT_SYMLINK_NOFOLLOW) != 0) {
        return ZPKFailure::ofSystem(from.path(), errno);
    }
    // A folder copied into itself would never be complete.
    if (S_ISDIR(attributes.st_mode) && liesIn(to.folder(), attributes)) {
        return ZPKFailure(to.path(), "Lies in the folder that is copied");
    }
    return ZPKTreeCopier(from, to).copyAll();
}

ZPKOutcome ZPKTreeCopier::copyAll() {
    note(copyItem({m_from.folder(), m_from.name(), m_to.folder(), m_to.name(), ""}));
    while (m_source.isInside()) {
        const ZPKFolderWalker::Entry* entry = m_source.nextEntry();
        if (entry == nullptr) {
            leave();
            continue;
        }
        note(copyItem({m_source.descriptor(), entry->name, m_destination.descriptor(), entry->name,
                       ZPKPath::join(m_below, entry->name)}));
    }
    return m_outcome;
}

ZPKOutcome ZPKTreeCopier::copyItem(const Step& step) {
    struct stat attributes;
    if (::fstatat(step.fromFolder, step.fromName.c_str(), &attributes, AT_SYMLINK_NOFOLLOW) != 0) {
        return ZPKFailure::ofSystem(m_from.pathBelow(step.below), errno);
    }
    switch (attributes.st_mode & S_IFMT) {
        case S_IFDIR:
            return enterCopy(step);
        case S_IFREG:
            return copyFile(step);
        case S_IFLNK:
            return copyLink(step, attributes);
        default:
            return ZPKFailure(m_from.pathBelow(step.below), "Neither file nor folder nor link");
    }
}

ZPKOutcome ZPKTreeCopier::enterCopy(const Step& step) {
    if (!m_source.enterAt(step.fromFolder, step.fromName)) {
        return ZPKFailure::ofSystem(m_from.pathBelow(step.below), errno);
    }
    // Until everything is in it the copy is open to its owner alone.
    if (::mkdirat(step.toFolder, step.toName.c_str(), S_IRWXU) != 0 ||
        !m_destination.enterAt(step.toFolder, step.toName)) {
        ZPKFailure failure = ZPKFailure::ofSystem(m_to.pathBelow(step.below), errno);
        m_source.leave();
        return failure;
    }
    m_below = step.below;
    return outcomeOf(m_source.readEntries(), m_from.pathBelow(step.below));
}

ZPKOutcome ZPKTreeCopier::copyFile(const Step& step) {
    const ZPKResult<ZPKFileHandle> from =
        ZPKFileHandle::forReadingAt(step.fromFolder, step.fromName, m_from.pathBelow(step.below));
    if (!from) {
        return from.failure();
    }
    ZPKResult<ZPKFileHandle> to =
        ZPKFileHandle::newFileAt(step.toFolder, step.toName, S_IRUSR | S_IWUSR, m_to.pathBelow(step.below));
    if (!to) {
        return to.failure();
    }
    if (ZPKOutcome outcome = to->append(*from, 0, from->size()); !outcome) {
        return outcome;
    }
    const struct stat& attributes = from->attributes();
    const std::array<timespec, 2> times{attributes.st_atim, attributes.st_mtim};
    return outcomeOf(::fchmod(to->descriptor(), attributes.st_mode & kCopiedPermissions) == 0 &&
                         ::futimens(to->descriptor(), times.data()) == 0,
                     m_to.pathBelow(step.below));
}

ZPKOutcome ZPKTreeCopier::copyLink(const Step& step, const struct stat& attributes) {
    std::string target(PATH_MAX, '\0');
    const ssize_t length = ::readlinkat(step.fromFolder, step.fromName.c_str(), target.data(), target.size());
    if (length < 0) {
        return ZPKFailure::ofSystem(m_from.pathBelow(step.below), errno);
    }
    target.resize(static_cast<std::size_t>(length));
    const std::array<timespec, 2> times{attributes.st_atim, attributes.st_mtim};
    return outcomeOf(
        ::symlinkat(target.c_str(), step.toFolder, step.toName.c_str()) == 0 &&
            ::utimensat(step.toFolder, step.toName.c_str(), times.data(), AT_SYMLINK_NOFOLLOW) == 0,
        m_to.pathBelow(step.below));
}

void ZPKTreeCopier::leave() {
    const std::string fromPath = m_from.pathBelow(m_below);
    const std::string toPath = m_to.pathBelow(m_below);
    const struct statx& attributes = m_source.attributes();
    const auto timeOf = [](const statx_timestamp& stamp) {
        return timespec{static_cast<time_t>(stamp.tv_sec), static_cast<long>(stamp.tv_nsec)};
    };
    const std::array<timespec, 2> times{timeOf(attributes.stx_atime), timeOf(attributes.stx_mtime)};
    const int copy = m_destination.descriptor();
    // The way up from a folder that its owner may not search has to be taken before its mode is set.
    const ZPKFileDescriptor kept(::fcntl(copy, F_DUPFD_CLOEXEC, 0));
    note(outcomeOf(::futimens(copy, times.data()) == 0, toPath));
    const bool isRegained = m_destination.leave();
    note(outcomeOf(isRegained, toPath));
    note(outcomeOf(::fchmod(kept.get(), attributes.stx_mode & kCopiedPermissions) == 0, toPath));
    note(outcomeOf(m_source.leave(), fromPath));
    const std::size_t separator = m_below.rfind('/');
    m_below.erase(separator == std::string::npos ? 0 : separator);
    if (!isRegained) {
        m_source = ZPKFolderWalker(ZPKFolderWalker::Access::Plain);
    }
}

void ZPKTreeCopier::note(const ZPKOutcome& outcome) {
    if (m_outcome) {
        m_outcome = outcome;
    }
}
