// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Platform/ZPKPrivateFolder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "Base/ZPKPath.h"
#include "Platform/ZPKFolderWalker.h"

namespace {

constexpr mode_t kPermissionBits = S_IRWXU | S_IRWXG | S_IRWXO;

/// The folder that stands in a place now. Every question and change goes through one descriptor, so
/// that all of them mean the same folder.
class PlacedFolder {
public:
    explicit PlacedFolder(const std::string& path)
        : m_path(path), m_descriptor(::open(path.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC)) {}

    /// The umask may have taken rights from the owner, and the parent's default permissions may have
    /// given some to others.
    ZPKOutcome close() {
        if (ZPKOutcome outcome = isOwn(); !outcome) {
            return outcome;
        }
        const bool isClosed = ZPKFolderWalker::giveToOwner(m_descriptor.get());
        return isClosed ? ZPKOutcome() : ZPKFailure::ofSystem(m_path, errno);
    }

    ZPKOutcome isPrivate() {
        if (ZPKOutcome outcome = isOwn(); !outcome) {
            return outcome;
        }
        return demand((m_attributes.stx_mode & kPermissionBits) == S_IRWXU, "Not its owner's alone");
    }

    ZPKOutcome isNew() {
        if (ZPKOutcome outcome = isPrivate(); !outcome) {
            return outcome;
        }
        if (ZPKFolderWalker::isMounted(m_attributes)) {
            return ZPKFailure(m_path, "Is a mount point");
        }
        ZPKFolderWalker walker(ZPKFolderWalker::Access::Plain);
        if (!walker.enterAt(m_descriptor.get(), ".") || !walker.readEntries()) {
            return ZPKFailure::ofSystem(m_path, errno);
        }
        return demand(walker.nextEntry() == nullptr, "Is not empty");
    }

    ZPKFileDescriptor take() { return std::move(m_descriptor); }

private:
    ZPKOutcome isOwn() {
        if (!m_descriptor.isOpen() ||
            ::statx(m_descriptor.get(), "", AT_EMPTY_PATH, STATX_BASIC_STATS, &m_attributes) != 0) {
            return ZPKFailure::ofSystem(m_path, errno);
        }
        return demand(m_attributes.stx_uid == ::geteuid(), "Belongs to another user");
    }

    ZPKOutcome demand(bool holds, const char* otherwise) const {
        return holds ? ZPKOutcome() : ZPKFailure(m_path, otherwise);
    }

    std::string m_path;
    ZPKFileDescriptor m_descriptor;
    struct statx m_attributes {};
};

}  // namespace

ZPKOutcome ZPKPrivateFolder::makeNew(const std::string& path) {
    const ZPKResult<ZPKFileDescriptor> folder = makeNewAndOpen(path);
    return folder ? ZPKOutcome() : folder.failure();
}

ZPKResult<ZPKFileDescriptor> ZPKPrivateFolder::makeNewAndOpen(const std::string& path) {
    const std::string place = ZPKPath::withoutTrailingSeparators(path);
    if (::mkdir(place.c_str(), S_IRWXU) != 0) {
        return ZPKFailure::ofSystem(path, errno);
    }
    PlacedFolder folder(place);
    ZPKOutcome outcome = folder.close();
    outcome = outcome ? folder.isNew() : outcome;
    if (!outcome) {
        // It takes no descriptor, and takes away nothing that holds anything.
        ::rmdir(place.c_str());
        return outcome.failure();
    }
    return folder.take();
}

ZPKOutcome ZPKPrivateFolder::makeOrFind(const std::string& path) {
    const std::string place = ZPKPath::withoutTrailingSeparators(path);
    const bool isMade = ::mkdir(place.c_str(), S_IRWXU) == 0;
    if (!isMade && errno != EEXIST) {
        return ZPKFailure::ofSystem(path, errno);
    }
    PlacedFolder folder(place);
    const ZPKOutcome outcome = isMade ? folder.close() : ZPKOutcome();
    return outcome ? folder.isPrivate() : outcome;
}

ZPKOutcome ZPKPrivateFolder::checkNew(const std::string& path) {
    return PlacedFolder(ZPKPath::withoutTrailingSeparators(path)).isNew();
}
