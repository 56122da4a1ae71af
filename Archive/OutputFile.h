// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>
#include <span>
#include <string>

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

    /// Whether the status is that of the growing file or of the one that it will replace.
    bool isSelf(const struct stat& status) const;

private:
    std::string m_path;
    ZPKReplacementFile m_file;
};

}  // namespace zpk_archive
