// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/run/RunFolder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <string_view>
#include <vector>

#include "Base/ZPKPath.h"
#include "Platform/ZPKFileManager.h"
#include "Platform/ZPKPrivateFolder.h"

namespace zpk_run {

namespace {

constexpr std::string_view kNamePrefix = "zephyrkit-run-";
constexpr int kAttempts = 100;

/// The folder's descriptor once this process holds its lock; none while another one does.
ZPKFileDescriptor locked(const std::string& path) {
    ZPKFileDescriptor folder(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (folder.isOpen() && ::flock(folder.get(), LOCK_EX | LOCK_NB) != 0) {
        return ZPKFileDescriptor();
    }
    return folder;
}

}  // namespace

ZPKResult<RunFolder> RunFolder::makeIn(const std::string& temporaryFolder) {
    ZPKOutcome last;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        std::string path =
            ZPKPath::join(temporaryFolder, std::string(kNamePrefix) + std::to_string(::getpid()) + "-" +
                                               std::to_string(attempt));
        last = ZPKPrivateFolder::makeNew(path);
        if (!last) {
            continue;
        }
        // Somebody's clean-up may come between the making and the lock.
        ZPKFileDescriptor lock = locked(path);
        if (lock.isOpen() && ZPKPrivateFolder::checkNew(path)) {
            return RunFolder(std::move(path), std::move(lock));
        }
        ::rmdir(path.c_str());
        last = ZPKFailure(path, "the folder cannot be locked");
    }
    return last.failure();
}

void RunFolder::removeAbandoned(const std::string& temporaryFolder) {
    std::vector<std::string> names;
    ZPKFileManager::contentsOfFolder(temporaryFolder, names).ignore();
    for (const std::string& name : names) {
        const std::string path = ZPKPath::join(temporaryFolder, name);
        if (name.starts_with(kNamePrefix) && locked(path).isOpen()) {
            ZPKFileManager::removeItem(path).ignore();
        }
    }
}

ZPKOutcome RunFolder::remove() const {
    return ZPKFileManager::removeItem(m_path);
}

}  // namespace zpk_run
