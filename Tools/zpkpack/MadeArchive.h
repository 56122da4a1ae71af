// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <functional>
#include <string>

#include "Archive/Archive.h"
#include "Package/ZPKPackageLayout.h"
#include "Tools/zpkpack/Check/FindingList.h"
#include "Tools/zpkpack/Check/FolderNames.h"

namespace zpk_packager {

class MadePackage;
class Progress;

/// One archive of a package that is checked: what keeps it from being read is a finding.
class MadeArchive {
public:
    /// All outlive the object; `progress` may be missing.
    MadeArchive(MadePackage& package, ZPKPackageLayout::Content content, FindingList& findings,
                Progress* progress);

    /// How findings name it.
    const std::string& name() const { return m_name; }

    /// Goes through all members; false, and a finding, when the archive is damaged.
    bool read(const zpk_archive::MemberReader& reader);

    /// The names once more, as they come; what is wrong with the archive was told before.
    FolderNames::Reader namesAgain();

private:
    MadePackage& m_package;
    const ZPKPackageLayout::Content m_content;
    FindingList& m_findings;
    Progress* const m_progress;
    const std::string m_name;
};

}  // namespace zpk_packager
