// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Package/CZPKUtil.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <memory>

#include "Base/ZPKPath.h"
#include "Package/ZPKPackageLayout.h"
#include "Platform/ZPKBundle.h"
#include "Platform/ZPKFileHandle.h"
#include "Platform/ZPKFileManager.h"
#include "Platform/ZPKMainBundle.h"
#include "Platform/ZPKTask.h"

namespace varno_zpk {

namespace {

/// How far the bytes of a package archive are rotated.
constexpr std::uint64_t kRotation = 102400;

constexpr unsigned int kFolderPermissions = 0777;

void runArchiveTool(ZPKTask& task, const std::vector<std::string>& arguments) {
    task.setLaunchPath(ZPKMainBundle::mainBundle().helperPath(ZPKPackageLayout::kArchiveTool));
    task.setArguments(arguments);
    if (task.launch()) {
        task.waitUntilExit();
    }
}

bool isSameFile(const ZPKFileHandle& file, const std::string& path) {
    struct stat attributes;
    return ::lstat(path.c_str(), &attributes) == 0 && attributes.st_dev == file.attributes().st_dev &&
           attributes.st_ino == file.attributes().st_ino;
}

/// Writes the two parts of `source` on both sides of `middle` to the new file in exchanged order.
bool writeExchanged(const ZPKFileHandle& source, std::uint64_t middle, ZPKResult<ZPKFileHandle> newFile) {
    if (!newFile) {
        return false;
    }
    newFile->reserve(source.size());
    return static_cast<bool>(newFile->append(source, middle, source.size() - middle)) &&
           static_cast<bool>(newFile->append(source, 0, middle));
}

/// The same for a file in its own place: it stays as it is until its replacement is complete.
void exchangeInPlace(const ZPKFileHandle& source, std::uint64_t middle, const std::string& path) {
    const std::string replacement = path + ".new-" + std::to_string(::getpid());
    ZPKResult<ZPKFileHandle> newFile = ZPKFileHandle::newFileAt(AT_FDCWD, replacement, 0666, replacement);
    if (!newFile) {
        return;
    }
    if (!writeExchanged(source, middle, std::move(newFile)) ||
        ::rename(replacement.c_str(), path.c_str()) != 0) {
        ZPKFileManager::removeItem(replacement).ignore();
    }
}

void exchange(const ZPKFileHandle& source, std::uint64_t middle, const std::string& dst) {
    if (isSameFile(source, dst)) {
        exchangeInPlace(source, middle, dst);
    } else {
        writeExchanged(source, middle, ZPKFileHandle::replacingFileAtPath(dst));
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
    const ZPKResult<ZPKFileHandle> source = ZPKFileHandle::forReadingAtPath(src);
    if (!source) {
        static_cast<void>(ZPKFileHandle::replacingFileAtPath(dst));
        return;
    }
    exchange(*source, std::min(kRotation, source->size()), dst);
}

void CZPKUtil::Unfake(const std::string& src, const std::string& dst) {
    const ZPKResult<ZPKFileHandle> source = ZPKFileHandle::forReadingAtPath(src);
    if (source && source->size() > kRotation) {
        exchange(*source, source->size() - kRotation, dst);
        return;
    }
    ZPKFileManager::copyItem(resolvedPath(src), dst).ignore();
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
