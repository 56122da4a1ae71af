// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "Package/ZPKPackageLayout.h"
#include "Tools/zpkpack/Check/FindingList.h"

namespace zpk_packager {

class MadePackage;
class Progress;

/// Every check of a package that was made, a bundle or one file. Its descriptions and texts are unpacked into
/// a private folder for the time being, the payload is not. Main thread only.
class PackageCheck {
public:
    /// `progress`, if it is given, shows the reading.
    explicit PackageCheck(FindingList& findings, Progress* progress = nullptr)
        : m_findings(findings), m_progress(progress) {}

    /// What cannot be opened at all is a finding, too. The list is finished afterwards. Throws
    /// `PackagerFailure` when there is no place for the private folder.
    void run(const std::string& path);

    /// Whether `path` is to be looked at as a made package: a file, or a folder that is a bundle or called
    /// like one.
    static bool isMeant(const std::string& path);

private:
    void checkAll(MadePackage& package);
    void checkManifest(MadePackage& package);
    bool checkDescriptionArchive(MadePackage& package);
    std::string checkTexts(MadePackage& package, bool withDescriptions);
    void checkPayloadArchive(MadePackage& package, const std::string& exec);
    void checkDescriptions(MadePackage& package, const std::string& folder);
    void copyLanguages(MadePackage& package, const std::string& folder);
    void checkLanguages(MadePackage& package, const std::string& folder);
    void takeOver(FindingList& found, const std::string& folder, const std::string& shown);

    FindingList& m_findings;
    Progress* m_progress;
};

}  // namespace zpk_packager
