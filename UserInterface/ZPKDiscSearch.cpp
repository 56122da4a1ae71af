// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/ZPKDiscSearch.h"

#include <utility>

#include "Base/ZPKPath.h"
#include "Common/WildCard.h"
#include "Package/CZPKUtil.h"
#include "UserInterface/ZPKRemovableVolumes.h"

using namespace varno_zpk;

namespace {

bool isPattern(const std::string& searchPath) {
    return searchPath.find_first_of("*?") != std::string::npos;
}

/// A pattern that begins with a star continues the volume's own path; any other begins below it.
std::string fullPattern(const std::string& volume, const std::string& searchPath) {
    return searchPath.front() == '*' ? volume + searchPath : ZPKPath::join(volume, searchPath);
}

bool anyMatches(const std::string& pattern, const std::vector<std::string>& paths,
                const std::stop_token& stop) {
    for (const std::string& path : paths) {
        if (stop.stop_requested()) {
            return false;
        }
        if (WildCard::Match(pattern, path)) {
            return true;
        }
    }
    return false;
}

}  // namespace

ZPKDiscSearch::ZPKDiscSearch(const ZPKRemovableVolumes& volumes, std::vector<std::string> searchPaths)
    : m_volumes(volumes), m_searchPaths(std::move(searchPaths)) {}

bool ZPKDiscSearch::findsDisc(const std::stop_token& stop) const {
    for (const std::string& volume : m_volumes.mountedRemovableMedia()) {
        if (stop.stop_requested()) {
            return false;
        }
        if (m_volumes.isCDMediaAtPath(volume) && isOnVolume(volume, stop)) {
            return true;
        }
    }
    return false;
}

bool ZPKDiscSearch::isOnVolume(const std::string& volume, const std::stop_token& stop) const {
    std::vector<std::string> files;
    for (const std::string& searchPath : m_searchPaths) {
        if (stop.stop_requested()) {
            return false;
        }
        if (!isPattern(searchPath)) {
            if (CZPKUtil::IsFileExist(ZPKPath::join(volume, searchPath))) {
                return true;
            }
            continue;
        }
        if (files.empty()) {
            CZPKUtil::GetFilePathList(volume, &files);
        }
        if (anyMatches(fullPattern(volume, searchPath), files, stop)) {
            return true;
        }
    }
    return false;
}
