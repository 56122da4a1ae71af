// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "Tools/zpkpack/Check/FindingList.h"

namespace zpk_packager {

/// Every check of a package source. The source is somebody else's: nothing in it is waited for, no link
/// below its folders is followed, and nothing is written. Main thread only.
class SourceCheck {
public:
    explicit SourceCheck(FindingList& findings) : m_findings(findings) {}

    /// `folder` need not exist. The list is finished afterwards.
    void run(const std::string& folder);

private:
    bool hasFolder(const std::string& path, const std::string& purpose);

    FindingList& m_findings;
};

}  // namespace zpk_packager
