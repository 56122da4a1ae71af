// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <utility>
#include <vector>

namespace zpk_packager {

/// The bundle with everything but the two archives, of which every package is a copy.
class LauncherTemplate {
public:
    explicit LauncherTemplate(std::string path) : m_path(std::move(path)) {}

    const std::string& path() const { return m_path; }

    /// Refuses what is no launcher's bundle. Throws `PackagerFailure`.
    void check() const;

    /// Copies the bundle without the items at the paths in `leftOut`, which are relative to it. The folders
    /// of the copy into which a package's own files go may be written by their owner, whatever their modes in
    /// the template are. Throws `PackagerFailure`.
    void copyTo(const std::string& bundle, const std::vector<std::string>& leftOut) const;

private:
    std::string m_path;
};

}  // namespace zpk_packager
