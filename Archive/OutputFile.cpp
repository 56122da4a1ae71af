// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/OutputFile.h"

#include <sys/stat.h>

#include <cerrno>

#include "Archive/DiskCalls.h"
#include "Archive/Failure.h"
#include "Archive/FileIdentity.h"
#include "Base/ZPKDescriptorIO.h"

namespace zpk_archive {

namespace {

ZPKReplacementFile growingFile(const std::string& path) {
    ZPKResult<ZPKReplacementFile> file = ZPKReplacementFile::forPath(path);
    if (!file) {
        throw ArchiveFailure(file.failure().reason());
    }
    return std::move(*file);
}

}  // namespace

OutputFile::OutputFile(const std::string& path) : m_file(growingFile(path)) {
    struct stat status {};
    if (!DiskCalls::status(m_file.descriptor(), status)) {
        throw ArchiveFailure::ofSystem(errno);
    }
    m_growing = FileIdentity(status);
    if (DiskCalls::succeeds([&] { return ::stat(path.c_str(), &status); })) {
        m_replaced = FileIdentity(status);
    }
}

void OutputFile::write(std::span<const std::uint8_t> bytes) {
    if (!ZPKDescriptorIO::writeWhole(m_file.descriptor(), bytes.data(), bytes.size())) {
        throw ArchiveFailure::ofSystem(errno);
    }
}

void OutputFile::commit() {
    if (const ZPKOutcome outcome = m_file.commit(); !outcome) {
        throw ArchiveFailure(outcome.failure().reason());
    }
}

bool OutputFile::isSelf(const struct stat& status) const {
    const FileIdentity identity(status);
    return identity == m_growing || identity == m_replaced;
}

}  // namespace zpk_archive
