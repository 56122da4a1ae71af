// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "Base/ZPKFailure.h"
#include "Platform/ZPKFolderWalker.h"
#include "Platform/ZPKItemPlace.h"

/// One removal of an item with everything in it. Links are removed, never followed; folders that their
/// owner may not read or write are removed too; what is mounted in a folder stays. Neither depth nor
/// the length of a path has a limit. One thread uses one.
class ZPKTreeRemover {
public:
    /// Removes as much as it can; the failure is the first one, and names what could not be removed.
    /// Nothing at the place is a failure.
    static ZPKOutcome remove(const ZPKItemPlace& place);

    /// The same with everything in an open folder, which stays. `path` is for people to read.
    static ZPKOutcome removeContents(int folder, const std::string& path);

private:
    ZPKTreeRemover(int parent, const std::string& path) : m_parent(parent), m_path(path) {}

    void walk();
    void removeEntry(const ZPKFolderWalker::Entry& entry);
    void enterOrRemove(int parent, const std::string& name);
    void leave();
    void note(const std::string& name, int error);

    /// Of the folder where the walk starts; -1 when that is to stay.
    int m_parent;
    const std::string& m_path;
    ZPKFolderWalker m_walker{ZPKFolderWalker::Access::ForRemoval};
    ZPKOutcome m_outcome;
};
