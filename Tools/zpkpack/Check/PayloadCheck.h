// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <sys/stat.h>

#include <string>
#include <vector>

#include "Base/ZPKNameBatch.h"
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
    void readNames(ZPKNameBatch& names);
    void checkNames();
    void forgetUpperNames();
    void checkItem(const std::string& name);
    void checkFile(const std::string& name, const struct stat& attributes);
    void checkLink(const std::string& name);
    void enter(const std::string& name);
    void reportUnreadable(const std::string& path);
    std::string pathOf(const std::string& name) const;

    FindingList& m_findings;
    std::string m_top;
    /// Of the folder that the walk is in.
    std::string m_path;
    ZPKFolderWalker m_walker{ZPKFolderWalker::Access::Plain};
    /// What is left of each folder on the way down.
    std::vector<ZPKNameBatch> m_levels;
};

}  // namespace zpk_packager
