// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Package/CZPKUtil.h"

#include <utility>

#include "Base/ZPKPath.h"
#include "Package/ZPKArchiveTool.h"
#include "Package/ZPKScrambler.h"
#include "Platform/ZPKFileManager.h"

namespace varno_zpk {

namespace {

constexpr unsigned int kFolderPermissions = 0777;

}  // namespace

void CZPKUtil::Compress(const std::string& src, const std::string& dst) {
    ZPKArchiveTool().pack(src, dst).ignore();
}

void CZPKUtil::Extract(const std::string& src, const std::string& dst) {
    ZPKArchiveTool().unpack(src, dst).ignore();
}

void CZPKUtil::Fake(const std::string& src, const std::string& dst) {
    ZPKScrambler::scramble(src, dst).ignore();
}

void CZPKUtil::Unfake(const std::string& src, const std::string& dst) {
    ZPKScrambler::unscramble(src, dst).ignore();
}

bool CZPKUtil::MakeDirectoryWithIntermediateDirectories(const std::string& path) {
    return static_cast<bool>(ZPKFileManager::createFolderWithIntermediateFolders(path, kFolderPermissions));
}

bool CZPKUtil::Copy(const std::string& src, const std::string& dst) {
    // Making room at the destination must not delete what is to be copied.
    if (ZPKPath::isItemOrInside(src, dst)) {
        return false;
    }
    ZPKFileManager::removeItem(dst).ignore();
    MakeDirectoryWithIntermediateDirectories(ZPKPath::parent(dst));
    return static_cast<bool>(ZPKFileManager::copyItem(src, dst));
}

bool CZPKUtil::DeleteFolder(const std::string& path) {
    return static_cast<bool>(ZPKFileManager::removeItem(path));
}

bool CZPKUtil::DeleteFile(const std::string& path) {
    return static_cast<bool>(ZPKFileManager::removeItem(path));
}

void CZPKUtil::GetFilePathList(const std::string& folder, std::vector<std::string>* list) {
    const std::string base = ZPKPath::join(folder, "");
    const std::string prefix = base == "/" ? base : base + "/";
    const auto append = [&](const std::string& path, ZPKFileManager::ItemKind kind) {
        // A link counts as what it leads to.
        const bool isLink = kind == ZPKFileManager::ItemKind::Link;
        const bool leadsToFile = isLink && IsFileExist(path) && !IsFolderExist(path);
        if (leadsToFile || kind == ZPKFileManager::ItemKind::Other) {
            list->push_back(path);
        }
    };
    ZPKFileManager::enumerateFolder(folder, append, prefix).ignore();
}

bool CZPKUtil::IsFileExist(const std::string& path) {
    return ZPKFileManager::fileExists(path);
}

bool CZPKUtil::IsFolderExist(const std::string& path) {
    return ZPKFileManager::isFolder(path);
}

}  // namespace varno_zpk
