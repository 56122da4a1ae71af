// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Base/ZPKReplacementFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cassert>
#include <cerrno>
#include <cstdio>

#include "Base/ZPKDescriptorIO.h"

namespace {

constexpr unsigned int kMaximumAttempts = 1000;
constexpr mode_t kPermissions = 0777;

}  // namespace

std::string ZPKReplacementFile::temporaryPathBeside(const std::string& path, unsigned int attempt) {
    return path.substr(0, path.rfind('/') + 1) + ".zpk-" + std::to_string(::getpid()) + "-" +
           std::to_string(attempt);
}

ZPKResult<ZPKReplacementFile> ZPKReplacementFile::forPath(const std::string& path, mode_t mode) {
    for (unsigned int attempt = 0; attempt < kMaximumAttempts; ++attempt) {
        std::string temporaryPath = temporaryPathBeside(path, attempt);
        const int flags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
        ZPKFileDescriptor file(
            ZPKDescriptorIO::retry([&] { return ::open(temporaryPath.c_str(), flags, mode); }));
        if (file.isOpen()) {
            return ZPKReplacementFile(path, std::move(temporaryPath), std::move(file));
        }
        if (errno != EEXIST) {
            break;
        }
    }
    return ZPKFailure::ofSystem(path, errno);
}

ZPKReplacementFile::ZPKReplacementFile(std::string path, std::string temporaryPath, ZPKFileDescriptor file)
    : m_path(std::move(path)), m_temporaryPath(std::move(temporaryPath)), m_file(std::move(file)) {}

ZPKReplacementFile::ZPKReplacementFile(ZPKReplacementFile&& other) noexcept
    : m_path(std::move(other.m_path)),
      m_temporaryPath(std::exchange(other.m_temporaryPath, {})),
      m_file(std::move(other.m_file)) {}

ZPKReplacementFile::~ZPKReplacementFile() {
    if (!m_temporaryPath.empty()) {
        ZPKDescriptorIO::retry([this] { return ::unlink(m_temporaryPath.c_str()); });
    }
}

ZPKOutcome ZPKReplacementFile::takeOverPermissions() {
    struct stat existing;
    const auto look = [&] { return ::stat(m_path.c_str(), &existing); };
    const auto take = [&] { return ::fchmod(m_file.get(), existing.st_mode & kPermissions); };
    if (ZPKDescriptorIO::retry(look) == 0 && ZPKDescriptorIO::retry(take) != 0) {
        return ZPKFailure::ofSystem(m_path, errno);
    }
    return {};
}

ZPKOutcome ZPKReplacementFile::commit() {
    assert(m_file.isOpen());
    // Some file systems tell of a lack of space only here; some know no syncing at all.
    const bool isSynced = ZPKDescriptorIO::retry([this] { return ::fsync(m_file.get()); }) == 0 ||
                          errno == EINVAL || errno == ENOSYS;
    const auto rename = [this] { return ::rename(m_temporaryPath.c_str(), m_path.c_str()); };
    if (!isSynced || !m_file.close() || ZPKDescriptorIO::retry(rename) != 0) {
        return ZPKFailure::ofSystem(m_path, errno);
    }
    m_temporaryPath.clear();
    return {};
}
