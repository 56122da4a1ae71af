// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "Tools/zpkpack/Check/FindingList.h"

namespace zpk_packager {

/// Looks at the picture of a package, or the drawing in its stead.
class IconCheck {
public:
    explicit IconCheck(FindingList& findings) : m_findings(findings) {}

    /// `folder` is the package source.
    void run(const std::string& folder);

private:
    void checkPicture(const std::string& path, const std::string& bytes);

    FindingList& m_findings;
};

}  // namespace zpk_packager
