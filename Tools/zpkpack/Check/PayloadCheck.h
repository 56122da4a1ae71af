// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <sys/stat.h>

#include <cstddef>
#include <string>
#include <vector>

#include "Platform/ZPKFolderWalker.h"
#include "Tools/zpkpack/Check/FindingList.h"

namespace zpk_packager {

/// Looks at every item of a folder that becomes an archive: whether it can be packed, and whether it comes
/// out on the other machine as it was.
class PayloadCheck {
public:
    explicit PayloadCheck(FindingList& findings) : m_findings(findings) {}

    /// No link below `folder` is followed, and no item but a folder is opened.
    void run(const std::string& folder);

private:
    /// What is left of one folder of the walk.
    struct Level {
        std::vector<std::string> names;
        std::size_t next = 0;
    };

    Level readLevel();
    void checkNames(const std::vector<std::string>& names);
    void checkItem(const std::string& name);
    void checkFile(const std::string& name, const struct stat& attributes);
    void checkLink(const std::string& name);
    void enter(const std::string& name);
    std::string pathOf(const std::string& name) const;

    FindingList& m_findings;
    std::string m_top;
    /// Of the folder that the walk is in.
    std::string m_path;
    ZPKFolderWalker m_walker{ZPKFolderWalker::Access::Plain};
    std::vector<Level> m_levels;
};

}  // namespace zpk_packager
