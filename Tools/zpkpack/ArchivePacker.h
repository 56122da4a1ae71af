// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include "Archive/Archive.h"
#include "Package/ZPKPackageLayout.h"
#include "Tools/zpkpack/Progress.h"

namespace zpk_packager {

/// Makes one of the two archives of a bundle.
class ArchivePacker {
public:
    /// Archives that are not yet scrambled go to `workFolder`. With a `time`, in seconds since 1970-01-01
    /// UTC, everything in them gets it instead of its own. `progress`, where it is given, outlives the
    /// packer.
    explicit ArchivePacker(std::string workFolder, std::optional<std::int64_t> time = {},
                           Progress* progress = nullptr)
        : m_workFolder(std::move(workFolder)), m_time(time), m_progress(progress) {}

    /// Archives the folder of `sourceFolder`, scrambles the archive into `resourceFolder` and reads the
    /// result back the way a launcher will. Throws `PackagerFailure` with the first item that could not be
    /// packed, and why.
    void pack(ZPKPackageLayout::Content content, const std::string& sourceFolder,
              const std::string& resourceFolder) const;

private:
    void makeArchive(const std::string& source, const std::string& archive) const;
    zpk_archive::ByteCounter begin(const std::string& what, const std::string& path) const;

    std::string m_workFolder;
    std::optional<std::int64_t> m_time;
    Progress* m_progress;
};

}  // namespace zpk_packager
