// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <utility>

namespace zpk_packager {

/// A private folder beside the output, for what is not yet complete, so that the last step is a mere
/// renaming. It goes with everything in it when the object does.
class WorkFolder {
public:
    /// Throws `PackagerFailure`.
    static WorkFolder beside(const std::string& outputPath);

    ~WorkFolder();
    WorkFolder(const WorkFolder&) = delete;
    WorkFolder& operator=(const WorkFolder&) = delete;

    const std::string& path() const { return m_path; }

private:
    explicit WorkFolder(std::string path) : m_path(std::move(path)) {}

    std::string m_path;
};

}  // namespace zpk_packager
