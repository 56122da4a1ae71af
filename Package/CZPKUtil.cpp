// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Package/CZPKUtil.h"

#include <cstdlib>
#include <memory>

#include "Base/ZPKPath.h"
#include "Package/ZPKPackageLayout.h"
#include "Package/ZPKScrambler.h"
#include "Platform/ZPKBundle.h"
#include "Platform/ZPKFileManager.h"
#include "Platform/ZPKMainBundle.h"
#include "Platform/ZPKTask.h"

namespace varno_zpk {

namespace {

constexpr unsigned int kFolderPermissions = 0777;

void runArchiveTool(ZPKTask& task, const std::vector<std::string>& arguments) {
    task.setLaunchPath(ZPKMainBundle::mainBundle().helperPath(ZPKPackageLayout::kArchiveTool));
    task.setArguments(arguments);
    if (task.launch()) {
        task.waitUntilExit();
    }
}

struct MemoryFree {
    void operator()(char* memory) const { std::free(memory); }
};

/// The path without links; empty when nothing is there.
std::string resolvedPath(const std::string& path) {
    const std::unique_ptr<char, MemoryFree> resolved(::realpath(path.c_str(), nullptr));
    return resolved ? resolved.get() : "";
}

std::string parentFolder(const std::string& path) {
    const std::size_t last = path.find_last_not_of('/');
    const std::size_t separator = last == std::string::npos ? last : path.find_last_of('/', last);
    if (separator == std::string::npos) {
        return ".";
    }
    return separator == 0 ? "/" : path.substr(0, separator);
}

/// The path of an item without links on the way to it, the item itself possibly a link; empty when
/// its folder is not there.
std::string resolvedItemPath(const std::string& path) {
    const std::string folder = resolvedPath(parentFolder(path));
    return folder.empty() ? folder : ZPKPath::join(folder, ZPKPath::lastComponent(path));
}

/// True when removing the item at `outer` would take `inner` with it.
bool isItemOrInside(const std::string& inner, const std::string& outer) {
    const std::string innerItem = resolvedItemPath(inner);
    const std::string outerItem = resolvedItemPath(outer);
    return !outerItem.empty() && (innerItem == outerItem || innerItem.starts_with(outerItem + "/"));
}

}  // namespace

void CZPKUtil::Compress(const std::string& src, const std::string& dst) {
    ZPKTask task;
    runArchiveTool(task, {"-c", "-z", "-rsrc", "--keepParent", src, dst});
}

void CZPKUtil::Extract(const std::string& src, const std::string& dst) {
    ZPKTask task;
    task.setStandardErrorToUnreadPipe();
    runArchiveTool(task, {"-x", "-z", "--rsrc", src, dst});
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
    if (isItemOrInside(src, dst)) {
        return false;
    }
    ZPKFileManager::removeItem(dst).ignore();
    MakeDirectoryWithIntermediateDirectories(parentFolder(dst));
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
    ZPKFileManager::enumerateFolder(folder, [&](const std::string& path, ZPKFileManager::ItemKind kind) {
        if (kind == ZPKFileManager::ItemKind::Folder) {
            return;
        }
        std::string full = prefix + path;
        // A link counts as what it leads to.
        if (kind == ZPKFileManager::ItemKind::Link && (!IsFileExist(full) || IsFolderExist(full))) {
            return;
        }
        list->push_back(std::move(full));
    }).ignore();
}

bool CZPKUtil::IsFileExist(const std::string& path) {
    return ZPKFileManager::fileExists(path);
}

bool CZPKUtil::IsFolderExist(const std::string& path) {
    return ZPKFileManager::isFolder(path);
}

}  // namespace varno_zpk
