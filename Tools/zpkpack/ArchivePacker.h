// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include "Package/ZPKPackageLayout.h"

namespace zpk_packager {

/// Makes one of the two archives of a bundle.
class ArchivePacker {
public:
    /// Archives that are not yet scrambled go to `workFolder`. With a `time`, in seconds since 1970-01-01
    /// UTC, everything in them gets it instead of its own.
    explicit ArchivePacker(std::string workFolder, std::optional<std::int64_t> time = {})
        : m_workFolder(std::move(workFolder)), m_time(time) {}

    /// Archives the folder of `sourceFolder`, scrambles the archive into `resourceFolder` and reads the
    /// result back the way a launcher will. Throws `PackagerFailure` with the first item that could not be
    /// packed, and why.
    void pack(ZPKPackageLayout::Content content, const std::string& sourceFolder,
              const std::string& resourceFolder) const;

private:
    void makeArchive(const std::string& source, const std::string& archive) const;

    std::string m_workFolder;
    std::optional<std::int64_t> m_time;
};

}  // namespace zpk_packager
