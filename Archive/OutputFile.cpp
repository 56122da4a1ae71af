// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/OutputFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "Archive/Failure.h"

namespace zpk_archive {

namespace {

constexpr int kNameAttempts = 100;

bool isSameFile(const struct stat& left, const struct stat& right) {
    return left.st_dev == right.st_dev && left.st_ino == right.st_ino;
}

}  // namespace

OutputFile::OutputFile(const std::string& path) : m_path(path) {
    for (int attempt = 0; attempt < kNameAttempts && !m_file; ++attempt) {
        m_temporaryPath = path + "." + std::to_string(getpid()) + "-" + std::to_string(attempt) + ".partial";
        m_file = FileDescriptor(
            open(m_temporaryPath.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666));
        if (!m_file && errno != EEXIST) {
            break;
        }
    }
    if (!m_file) {
        throw ArchiveFailure(systemReason(errno));
    }
}

OutputFile::~OutputFile() {
    if (!m_temporaryPath.empty()) {
        unlink(m_temporaryPath.c_str());
    }
}

void OutputFile::write(std::span<const std::uint8_t> bytes) {
    while (!bytes.empty()) {
        ssize_t wrote = ::write(m_file.get(), bytes.data(), bytes.size());
        if (wrote < 0 && errno == EINTR) {
            continue;
        }
        if (wrote <= 0) {
            throw ArchiveFailure(systemReason(wrote < 0 ? errno : ENOSPC));
        }
        bytes = bytes.subspan(static_cast<std::size_t>(wrote));
    }
}

void OutputFile::commit() {
    // Some file systems tell of a lack of space only here.
    bool synced = fsync(m_file.get()) == 0 || errno == EINVAL || errno == ENOSYS;
    if (!synced || !m_file.close() || rename(m_temporaryPath.c_str(), m_path.c_str()) != 0) {
        throw ArchiveFailure(systemReason(errno));
    }
    m_temporaryPath.clear();
}

bool OutputFile::isSelf(const struct stat& status) const {
    struct stat own {};
    return (fstat(m_file.get(), &own) == 0 && isSameFile(own, status)) ||
           (stat(m_path.c_str(), &own) == 0 && isSameFile(own, status));
}

}  // namespace zpk_archive
