// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "Tools/zpkpack/Check/FindingList.h"
#include "Tools/zpkpack/Check/PackageStrings.h"
#include "Tools/zpkpack/Check/SourceText.h"

namespace zpk_packager {

/// Looks at `Package.strings`, and takes what it allows.
class PackageStringsCheck {
public:
    explicit PackageStringsCheck(FindingList& findings) : m_findings(findings) {}

    /// `folder` is the package source.
    void run(const std::string& folder);

private:
    void takeAllowances(const PackageStrings& strings, const SourceText& text);
    void checkEntries(const PackageStrings& strings, const SourceText& text);
    void checkNames(const ZPKPropertyList& entries, const PackageStrings& strings, const SourceText& text);

    FindingList& m_findings;
    std::string m_path;
};

}  // namespace zpk_packager
