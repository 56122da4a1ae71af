// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <utility>

#include "Base/ZPKFileDescriptor.h"

namespace zpk_packager {

/// A private folder beside the output, for what is not yet complete, so that the last step is a mere
/// renaming. It goes with everything in it when the object does. What a process that was killed outright has
/// left is removed by the next one that works there: as long as a process, or a child of it, is there, its
/// folder is locked.
class WorkFolder {
public:
    /// Throws `PackagerFailure`.
    static WorkFolder beside(const std::string& outputPath);

    ~WorkFolder();
    WorkFolder(const WorkFolder&) = delete;
    WorkFolder& operator=(const WorkFolder&) = delete;

    const std::string& path() const { return m_path; }

private:
    WorkFolder(std::string path, ZPKFileDescriptor lock) : m_path(std::move(path)), m_lock(std::move(lock)) {}

    std::string m_path;
    ZPKFileDescriptor m_lock;
};

}  // namespace zpk_packager
