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

private:
    explicit ZPKTreeRemover(const ZPKItemPlace& place) : m_place(place) {}

    ZPKOutcome removeFolder();
    void removeEntry(const ZPKFolderWalker::Entry& entry);
    void enterOrRemove(int parent, const std::string& name);
    void leave();
    void note(const std::string& name, int error);

    const ZPKItemPlace& m_place;
    ZPKFolderWalker m_walker{ZPKFolderWalker::Access::ForRemoval};
    ZPKOutcome m_outcome;
};
