// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <vector>

namespace varno_zpk {

/// Holds folders for a stretch of code: makes them afresh when it is created and deletes them when
/// it is destroyed. What the file system refuses is ignored; see the folder itself for the outcome.
class CDirectoryHolder {
public:
    /// Makes `createPath` afresh (anything there is deleted first) and records `removePath` for
    /// removal; either may be empty. When making the folder throws, `createPath` is deleted and the
    /// exception passes on.
    CDirectoryHolder(const std::string& createPath, const std::string& removePath);

    /// The same for lists, in order. When making a folder throws, those made before it are deleted
    /// and the exception passes on.
    CDirectoryHolder(const std::vector<std::string>& createPaths,
                     const std::vector<std::string>& removePaths);

    /// Deletes the recorded folders in list order; an exception is swallowed and ends the deleting.
    ~CDirectoryHolder();

    CDirectoryHolder(const CDirectoryHolder&) = delete;
    CDirectoryHolder& operator=(const CDirectoryHolder&) = delete;

private:
    std::vector<std::string> m_removePaths;
};

}  // namespace varno_zpk
