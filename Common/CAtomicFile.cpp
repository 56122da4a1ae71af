// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Common/CAtomicFile.h"

#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstddef>

namespace varno_zpk {

namespace {

constexpr mode_t kNewFileMode = 0666;
constexpr mode_t kPermissions = 0777;
constexpr unsigned int kMaximumAttempts = 1000;

/// Creates a file that was not there in the folder of `path`. Its name does not grow with the
/// target's, which may already be as long as the file system allows. -1 on failure.
int createTemporaryFile(const std::string& path, std::string& outTemporaryPath) {
    const std::string folder = path.substr(0, path.rfind('/') + 1);
    for (unsigned int attempt = 0; attempt < kMaximumAttempts; ++attempt) {
        outTemporaryPath = folder + ".zpk-" + std::to_string(getpid()) + "-" + std::to_string(attempt);
        const int descriptor =
            open(outTemporaryPath.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kNewFileMode);
        if (descriptor >= 0 || errno != EEXIST) {
            return descriptor;
        }
    }
    return -1;
}

bool writeAll(int descriptor, const std::string& contents) {
    std::size_t done = 0;
    while (done < contents.size()) {
        const ssize_t count = write(descriptor, contents.data() + done, contents.size() - done);
        if (count < 0 && errno != EINTR) {
            return false;
        }
        done += count > 0 ? static_cast<std::size_t>(count) : 0;
    }
    return true;
}

bool takeOverPermissions(const char* path, int descriptor) {
    struct stat existing;
    if (stat(path, &existing) != 0) {
        return true;
    }
    return fchmod(descriptor, existing.st_mode & kPermissions) == 0;
}

}  // namespace

bool CAtomicFile::Replace(const char* path, const std::string& contents) {
    std::string temporaryPath;
    const int descriptor = createTemporaryFile(path, temporaryPath);
    if (descriptor < 0) {
        return false;
    }
    bool isDone = writeAll(descriptor, contents) && takeOverPermissions(path, descriptor);
    // What could not be written may show only here.
    isDone = fsync(descriptor) == 0 && isDone;
    isDone = close(descriptor) == 0 && isDone;
    isDone = isDone && rename(temporaryPath.c_str(), path) == 0;
    if (!isDone) {
        unlink(temporaryPath.c_str());
    }
    return isDone;
}

}  // namespace varno_zpk
