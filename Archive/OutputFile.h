// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "Archive/FileIdentity.h"
#include "Base/ZPKReplacementFile.h"

struct stat;

namespace zpk_archive {

/// The archive that is being written; it appears under its name when it is complete, and otherwise not
/// at all. Operations throw ArchiveFailure.
class OutputFile {
public:
    explicit OutputFile(const std::string& path);

    void write(std::span<const std::uint8_t> bytes);

    /// Makes sure that the data are on disk and gives the file its name, replacing a file there.
    void commit();

    /// Whether the status is that of the growing file, or of the one that had its name at the beginning.
    bool isSelf(const struct stat& status) const;

private:
    ZPKReplacementFile m_file;
    FileIdentity m_growing;
    std::optional<FileIdentity> m_replaced;
};

}  // namespace zpk_archive
