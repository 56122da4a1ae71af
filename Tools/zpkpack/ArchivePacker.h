// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <utility>

#include "Package/ZPKPackageLayout.h"

namespace zpk_packager {

/// Makes one of the two archives of a bundle.
class ArchivePacker {
public:
    /// Archives that are not yet scrambled go to `workFolder`.
    explicit ArchivePacker(std::string workFolder) : m_workFolder(std::move(workFolder)) {}

    /// Archives the folder of `sourceFolder`, scrambles the archive into `resourceFolder` and reads the
    /// result back the way a launcher will. Throws `PackagerFailure` with the first item that could not be
    /// packed, and why.
    void pack(ZPKPackageLayout::Content content, const std::string& sourceFolder,
              const std::string& resourceFolder) const;

private:
    std::string m_workFolder;
};

}  // namespace zpk_packager
