// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Platform/ZPKTreeRemover.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "Base/ZPKPath.h"

namespace {

constexpr int kNoParent = -1;

/// What could not be unlinked because it is a folder.
bool isFolderError(int error) {
    return error == EISDIR || error == EPERM;
}

bool unlinkOrGone(int folder, const char* name, int flags) {
    return ::unlinkat(folder, name, flags) == 0 || errno == ENOENT;
}

}  // namespace

ZPKOutcome ZPKTreeRemover::remove(const ZPKItemPlace& place) {
    if (::unlinkat(place.folder(), place.name().c_str(), 0) == 0) {
        return {};
    }
    if (!isFolderError(errno)) {
        return ZPKFailure::ofSystem(place.path(), errno);
    }
    ZPKTreeRemover remover(place.folder(), place.path());
    remover.enterOrRemove(place.folder(), place.name());
    remover.walk();
    return remover.m_outcome;
}

ZPKOutcome ZPKTreeRemover::removeContents(int folder, const std::string& path) {
    ZPKTreeRemover remover(kNoParent, path);
    ZPKFolderWalker& walker = remover.m_walker;
    // Who may not search a folder cannot so much as go from it to itself.
    const bool isEntered =
        walker.enterAt(folder, ".") ||
        (errno == EACCES && ZPKFolderWalker::giveToOwner(folder) && walker.enterAt(folder, "."));
    if (!isEntered || !walker.readEntries()) {
        remover.note("", errno);
    }
    remover.walk();
    return remover.m_outcome;
}

void ZPKTreeRemover::walk() {
    while (m_walker.isInside()) {
        const ZPKFolderWalker::Entry* entry = m_walker.nextEntry();
        if (entry == nullptr) {
            leave();
        } else {
            removeEntry(*entry);
        }
    }
}

void ZPKTreeRemover::removeEntry(const ZPKFolderWalker::Entry& entry) {
    if (entry.type != DT_DIR) {
        if (unlinkOrGone(m_walker.descriptor(), entry.name, 0)) {
            return;
        }
        if (!isFolderError(errno)) {
            note(entry.name, errno);
            return;
        }
    }
    enterOrRemove(m_walker.descriptor(), entry.name);
}

void ZPKTreeRemover::enterOrRemove(int parent, const std::string& name) {
    if (m_walker.enterAt(parent, name)) {
        m_walker.readEntries();
        return;
    }
    const int enterError = errno;
    if (!unlinkOrGone(parent, name.c_str(), AT_REMOVEDIR)) {
        // That a folder is full is no news where it could not be entered.
        note(name, errno == ENOTEMPTY ? enterError : errno);
    }
}

void ZPKTreeRemover::leave() {
    const std::string name = m_walker.name();
    if (!m_walker.leave()) {
        note(name, errno);
        return;
    }
    const int parent = m_walker.isInside() ? m_walker.descriptor() : m_parent;
    if (parent != kNoParent && !unlinkOrGone(parent, name.c_str(), AT_REMOVEDIR)) {
        note(name, errno);
    }
}

void ZPKTreeRemover::note(const std::string& name, int error) {
    if (!m_outcome) {
        return;
    }
    // Outside the walk there is the item itself alone.
    const std::string below = m_walker.isInside() ? ZPKPath::join(m_walker.pathBelowStart(), name) : "";
    m_outcome = ZPKFailure::ofSystem(ZPKPath::join(m_path, below), error);
}
