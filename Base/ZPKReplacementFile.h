// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

#include "Base/ZPKFailure.h"
#include "Base/ZPKFileDescriptor.h"

/// A file that appears under its name when it is complete, and otherwise not at all: it grows under
/// another name beside it. One thread uses one.
class ZPKReplacementFile {
public:
    /// Makes the growing file, with `mode` less the process's umask.
    static ZPKResult<ZPKReplacementFile> forPath(const std::string& path, mode_t mode = 0666);

    /// Removes the growing file unless `commit` gave it its name.
    ~ZPKReplacementFile();
    ZPKReplacementFile(ZPKReplacementFile&& other) noexcept;
    ZPKReplacementFile& operator=(ZPKReplacementFile&&) = delete;

    /// The name that the file is to have.
    const std::string& path() const { return m_path; }

    /// Open for writing; stays this object's.
    int descriptor() const { return m_file.get(); }

    /// Gives the growing file the permission bits of the file that it will replace, if there is one.
    ZPKOutcome takeOverPermissions();

    /// Makes sure that the data are on disk and gives the file its name, replacing a file or a link
    /// that is there. Once only.
    ZPKOutcome commit();

    /// A name beside `path` for something that is not yet complete. It does not grow with the name of
    /// `path`, which may already be as long as the file system allows, and begins with a dot; `attempt`
    /// tells several of one process apart.
    static std::string temporaryPathBeside(const std::string& path, unsigned int attempt);

private:
    ZPKReplacementFile(std::string path, std::string temporaryPath, ZPKFileDescriptor file);

    std::string m_path;
    std::string m_temporaryPath;
    ZPKFileDescriptor m_file;
};
