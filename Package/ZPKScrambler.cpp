// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Package/ZPKScrambler.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <utility>

#include "Base/ZPKPath.h"
#include "Base/ZPKReplacementFile.h"
#include "Platform/ZPKFileHandle.h"
#include "Platform/ZPKFileManager.h"
#include "Platform/ZPKHeldFolder.h"

namespace {

/// How far the bytes of a package archive are rotated.
constexpr std::uint64_t kRotation = 102400;

bool isSameFile(const ZPKFileHandle& file, const std::string& path) {
    struct stat attributes;
    return ZPKHeldFolder::look(path, attributes, AT_SYMLINK_NOFOLLOW) &&
           attributes.st_dev == file.attributes().st_dev && attributes.st_ino == file.attributes().st_ino;
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
    ZPKResult<ZPKReplacementFile> replacement = ZPKReplacementFile::forPath(path);
    if (!replacement) {
        return replacement.failure();
    }
    ZPKOutcome outcome =
        writeExchanged(source, middle, ZPKFileHandle::forWritingTo(replacement->descriptor(), path));
    return outcome ? replacement->commit() : outcome;
}

/// An empty file at `path`: a new one, or, in a folder in which nothing may be removed, the old one
/// without its contents.
ZPKResult<ZPKFileHandle> emptyFileAt(const std::string& path) {
    ZPKResult<ZPKFileHandle> newFile = ZPKFileHandle::replacingFileAtPath(path);
    if (newFile) {
        return newFile;
    }
    ZPKResult<ZPKFileHandle> oldFile = ZPKFileHandle::emptyingFileAtPath(path);
    return oldFile ? std::move(oldFile) : std::move(newFile);
}

ZPKOutcome exchange(const ZPKFileHandle& source, std::uint64_t middle, const std::string& destination) {
    if (isSameFile(source, destination)) {
        return exchangeInPlace(source, middle, destination);
    }
    return writeExchanged(source, middle, emptyFileAt(destination));
}

}  // namespace

std::array<ZPKScrambler::Piece, 2> ZPKScrambler::piecesOfPlain(std::uint64_t size) {
    const std::uint64_t front = size > kRotation ? kRotation : 0;
    return {Piece{size - front, front}, Piece{0, size - front}};
}

ZPKOutcome ZPKScrambler::scramble(const std::string& source, const std::string& destination) {
    const ZPKResult<ZPKFileHandle> file = ZPKFileHandle::forReadingAtPath(source);
    if (!file) {
        static_cast<void>(emptyFileAt(destination));
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
