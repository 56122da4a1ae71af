// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <sys/stat.h>

#include <string>

#include "Base/ZPKFailure.h"
#include "Platform/ZPKFolderWalker.h"
#include "Platform/ZPKItemPlace.h"

/// One copying of an item with everything in it: files, links and folders, with permissions (less
/// set-ID bits) and times. FIFOs, sockets and devices are not copied. Neither depth nor the length of a
/// path has a limit. One thread uses one.
class ZPKTreeCopier {
public:
    /// Copies as much as it can, and never overwrites; the failure is the first one, and names what
    /// could not be copied or written. A folder is not copied into itself. After a failure what was
    /// written stays.
    static ZPKOutcome copy(const ZPKItemPlace& from, const ZPKItemPlace& to);

private:
    /// One item under way: where it is, where it goes, and its path below the item that is copied.
    struct Step {
        int fromFolder;
        std::string fromName;
        int toFolder;
        std::string toName;
        std::string below;
    };

    ZPKTreeCopier(const ZPKItemPlace& from, const ZPKItemPlace& to) : m_from(from), m_to(to) {}

    ZPKOutcome copyAll();
    ZPKOutcome copyItem(const Step& step);
    ZPKOutcome enterCopy(const Step& step);
    ZPKOutcome copyFile(const Step& step);
    ZPKOutcome copyLink(const Step& step, const struct stat& attributes);
    void leave();
    void note(const ZPKOutcome& outcome);

    const ZPKItemPlace& m_from;
    const ZPKItemPlace& m_to;
    ZPKFolderWalker m_source{ZPKFolderWalker::Access::Plain};
    ZPKFolderWalker m_destination{ZPKFolderWalker::Access::Plain};
    /// The path of the current folder below the item that is copied.
    std::string m_below;
    ZPKOutcome m_outcome;
};
