// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Package/CDirectoryHolder.h"

#include "Package/CZPKUtil.h"

namespace varno_zpk {

namespace {

/// Leftovers of an earlier run never survive: whatever is there goes first.
void makeDirectoryAfresh(const std::string& path) {
    CZPKUtil::DeleteFolder(path);
    CZPKUtil::MakeDirectoryWithIntermediateDirectories(path);
}

/// For the way out of a failure, whose own exception is the one to pass on.
void deleteQuietly(const std::string& path) {
    try {
        CZPKUtil::DeleteFolder(path);
    } catch (...) {
        // The first failure is the one that counts.
    }
}

}  // namespace

CDirectoryHolder::CDirectoryHolder(const std::string& createPath, const std::string& removePath) {
    if (!removePath.empty()) {
        m_removePaths.push_back(removePath);
    }
    if (createPath.empty()) {
        return;
    }
    try {
        makeDirectoryAfresh(createPath);
    } catch (...) {
        deleteQuietly(createPath);
        throw;
    }
}

CDirectoryHolder::CDirectoryHolder(const std::vector<std::string>& createPaths,
                                   const std::vector<std::string>& removePaths)
    : m_removePaths(removePaths) {
    std::size_t made = 0;
    try {
        for (; made < createPaths.size(); ++made) {
            makeDirectoryAfresh(createPaths[made]);
        }
    } catch (...) {
        for (std::size_t index = 0; index < made; ++index) {
            deleteQuietly(createPaths[index]);
        }
        throw;
    }
}

CDirectoryHolder::~CDirectoryHolder() {
    try {
        for (const std::string& path : m_removePaths) {
            CZPKUtil::DeleteFolder(path);
        }
    } catch (...) {
        // A destructor has nobody to tell, and what is left to delete is left.
    }
}

}  // namespace varno_zpk
