// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <stop_token>
#include <string>
#include <vector>

class ZPKRemovableVolumes;

/// The search for the installation disc among the mounted volumes. It touches no window, so that it may
/// run on any thread.
class ZPKDiscSearch {
public:
    /// `searchPaths` are paths or patterns with "*" and "?", relative to a disc; any one of them
    /// suffices. `volumes` outlives the search.
    ZPKDiscSearch(const ZPKRemovableVolumes& volumes, std::vector<std::string> searchPaths);

    /// Looks at the optical discs among the volumes that are mounted now, one after the other, and stops
    /// at the first one that it knows. True when there is such a disc; false also when it was asked to
    /// stop, which it notices between two looks.
    bool findsDisc(const std::stop_token& stop) const;

private:
    bool isOnVolume(const std::string& volume, const std::stop_token& stop) const;

    const ZPKRemovableVolumes& m_volumes;
    const std::vector<std::string> m_searchPaths;
};
