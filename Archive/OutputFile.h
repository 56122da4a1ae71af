// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "Archive/FileDescriptor.h"

struct stat;

namespace zpk_archive {

/// A file that appears under its name when it is complete, and otherwise not at all: it grows under a
/// temporary name beside it. Operations throw ArchiveFailure.
class OutputFile {
public:
    explicit OutputFile(const std::string& path);
    /// Removes the temporary file unless `commit` has been called.
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    void write(std::span<const std::uint8_t> bytes);
    /// Makes sure that the data are on disk and gives the file its name, replacing a file there.
    void commit();

    /// Whether the status is that of the growing file or of the one that it will replace.
    bool isSelf(const struct stat& status) const;

private:
    std::string m_path;
    std::string m_temporaryPath;
    FileDescriptor m_file;
};

}  // namespace zpk_archive
