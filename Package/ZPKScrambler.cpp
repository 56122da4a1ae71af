// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Package/ZPKScrambler.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>

#include "Base/ZPKPath.h"
#include "Base/ZPKReplacementFile.h"
#include "Platform/ZPKFileHandle.h"
#include "Platform/ZPKFileManager.h"

namespace {

/// How far the bytes of a package archive are rotated.
constexpr std::uint64_t kRotation = 102400;

bool isSameFile(const ZPKFileHandle& file, const std::string& path) {
    struct stat attributes;
    return ::lstat(path.c_str(), &attributes) == 0 && attributes.st_dev == file.attributes().st_dev &&
           attributes.st_ino == file.attributes().st_ino;
}

/// Writes the two parts of `source` on both sides of `middle` to the new file in exchanged order.
ZPKOutcome writeExchanged(const ZPKFileHandle& source, std::uint64_t middle,
                          ZPKResult<ZPKFileHandle> newFile) {
    if (!newFile) {
        return newFile.failure();
    }
    newFile->reserve(source.size());
    const ZPKOutcome end = newFile->append(source, middle, source.size() - middle);
    return end ? newFile->append(source, 0, middle) : end;
}

/// The same for a file in its own place: it stays as it is until its replacement is complete.
ZPKOutcome exchangeInPlace(const ZPKFileHandle& source, std::uint64_t middle, const std::string& path) {
    const std::string growing = ZPKReplacementFile::temporaryPathBeside(path, 0);
    ZPKResult<ZPKFileHandle> newFile = ZPKFileHandle::newFileAt(AT_FDCWD, growing, 0666, growing);
    if (!newFile) {
        return newFile.failure();
    }
    ZPKOutcome outcome = writeExchanged(source, middle, std::move(newFile));
    if (outcome && ::rename(growing.c_str(), path.c_str()) != 0) {
        outcome = ZPKFailure::ofSystem(path, errno);
    }
    if (!outcome) {
        ZPKFileManager::removeItem(growing).ignore();
    }
    return outcome;
}

ZPKOutcome exchange(const ZPKFileHandle& source, std::uint64_t middle, const std::string& destination) {
    if (isSameFile(source, destination)) {
        return exchangeInPlace(source, middle, destination);
    }
    return writeExchanged(source, middle, ZPKFileHandle::replacingFileAtPath(destination));
}

}  // namespace

ZPKOutcome ZPKScrambler::scramble(const std::string& source, const std::string& destination) {
    const ZPKResult<ZPKFileHandle> file = ZPKFileHandle::forReadingAtPath(source);
    if (!file) {
        static_cast<void>(ZPKFileHandle::replacingFileAtPath(destination));
        return file.failure();
    }
    return exchange(*file, std::min(kRotation, file->size()), destination);
}

ZPKOutcome ZPKScrambler::unscramble(const std::string& source, const std::string& destination) {
    const ZPKResult<ZPKFileHandle> file = ZPKFileHandle::forReadingAtPath(source);
    if (file && file->size() > kRotation) {
        return exchange(*file, file->size() - kRotation, destination);
    }
    return ZPKFileManager::copyItem(ZPKPath::resolved(source), destination);
}
