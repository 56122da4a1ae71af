// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Common/CFileManagerLow.h"

#include <filesystem>
#include <system_error>

#include "Base/ZPKPath.h"
#include "Platform/ZPKFileManager.h"
#include "Platform/ZPKStandardFolders.h"

namespace varno_zpk {

namespace {

constexpr char kSeparator = '/';

/// The working folder; empty when it cannot be told.
std::string workingFolder() {
    std::error_code error;
    const std::filesystem::path folder = std::filesystem::current_path(error);
    return error ? std::string() : folder.string();
}

std::string standardizedPath(const std::string& path) {
    return ZPKPath::withoutTrailingSeparators(std::filesystem::path(path).lexically_normal().string());
}

}  // namespace

bool CFileManagerLow::GetPublicDocumentFolderPath(std::string& outPath) {
    outPath = ZPKPath::join(ZPKStandardFolders::usersFolder(), "Shared");
    return true;
}

void CFileManagerLow::ConvertRelToAbsPath(const char* path, std::string& outPath) {
    std::string fullPath(path);
    if (fullPath.empty() || fullPath.front() != kSeparator) {
        fullPath = ZPKPath::join(workingFolder(), fullPath);
    }
    outPath = standardizedPath(fullPath);
}

void CFileManagerLow::GetFolderContents(const char* folder, std::vector<std::string>& outNames) {
    outNames.clear();
    ZPKFileManager::contentsOfFolder(folder, outNames).ignore();
}

bool CFileManagerLow::IsFolder(const char* path) {
    // A separator at the end would make the host follow a link.
    return ZPKFileManager::isFolderNotFollowingLinks(ZPKPath::withoutTrailingSeparators(path));
}

}  // namespace varno_zpk
