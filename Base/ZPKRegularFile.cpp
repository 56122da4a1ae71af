// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Base/ZPKRegularFile.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

#include "Base/ZPKDescriptorIO.h"

ZPKFileDescriptor ZPKRegularFile::open(const std::string& path) {
    ZPKFileDescriptor file(ZPKDescriptorIO::retry(
        [&] { return ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY); }));
    struct stat attributes {};
    if (!file.isOpen() || ::fstat(file.get(), &attributes) != 0) {
        return {};
    }
    if (!S_ISREG(attributes.st_mode)) {
        file = {};
        errno = S_ISDIR(attributes.st_mode) ? EISDIR : EINVAL;
    }
    return file;
}

std::optional<std::string> ZPKRegularFile::contents(const std::string& path, std::size_t limit) {
    const ZPKFileDescriptor file = open(path);
    return file.isOpen() ? ZPKDescriptorIO::readToEnd(file.get(), limit) : std::nullopt;
}
