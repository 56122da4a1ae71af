// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <utility>

#include "Tools/zpkpack/MadePackage.h"
#include "Tools/zpkpack/PackageDescription.h"

namespace zpk_packager {

/// Makes a package source of a package, such that the same launcher template gives the same package of it
/// again. Operations throw `PackagerFailure`.
class PackageExtractor {
public:
    /// `package` outlives the extractor; new things are written in `workFolder`, which nobody else may
    /// write to. `progress`, if it is given, shows the unpacking, and outlives the extractor.
    PackageExtractor(MadePackage& package, std::string workFolder, Progress* progress = nullptr)
        : m_package(package), m_workFolder(std::move(workFolder)), m_progress(progress) {}

    /// Makes the source folder `source` in the work folder.
    void extractTo(const std::string& source) const;

    /// Unpacks the archive's folder into the folder `source`.
    void extractArchive(ZPKPackageLayout::Content content, const std::string& source) const;

    /// Makes the folder of languages, if the package has one, in the folder `source`.
    void extractLanguages(const std::string& source) const;

    /// Makes the picture of the package, if it has one, in the folder `source`.
    void extractIcon(const std::string& source) const;

private:
    PackageDescription description() const;
    void extractItem(const MadePackage::Item& item, const std::string& path) const;
    void extractFile(const MadePackage::Item& item, const std::string& path) const;

    MadePackage& m_package;
    std::string m_workFolder;
    Progress* m_progress;
};

}  // namespace zpk_packager
