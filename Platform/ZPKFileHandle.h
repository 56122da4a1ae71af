// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <optional>
#include <string>

#include "Base/ZPKFileDescriptor.h"

/// An open regular file. Nothing here waits on a FIFO or a device: such items are refused.
/// One thread uses one handle.
class ZPKFileHandle {
public:
    /// The regular file that `path` leads to; nothing when there is none or it may not be read.
    static std::optional<ZPKFileHandle> forReadingAtPath(const std::string& path);

    /// The same relative to an open folder; a link is refused.
    static std::optional<ZPKFileHandle> forReadingAt(int folder, const std::string& name);

    /// A new empty file in place of the file, link or other item at `path`; what a link leads to and
    /// the other names of a file stay as they are. Nothing when it cannot be made or a folder is there.
    static std::optional<ZPKFileHandle> replacingFileAtPath(const std::string& path);

    /// A new empty file; nothing when anything is there already.
    static std::optional<ZPKFileHandle> newFileAt(int folder, const std::string& name, unsigned int mode);

    int descriptor() const { return m_descriptor.get(); }

    /// What the file system said of the file when it was opened.
    const struct stat& attributes() const { return m_attributes; }

    /// Size in bytes when the file was opened.
    std::uint64_t size() const { return static_cast<std::uint64_t>(m_attributes.st_size); }

    /// Tells the file system how large the file is about to become, so that it can lay it out at once;
    /// the size stays as it is. A mere hint: failures do not count.
    void reserve(std::uint64_t size);

    /// Appends `length` bytes of `source` from `offset` on; memory use does not depend on the length.
    /// False when the source ends before or a write fails; what was written stays.
    bool append(const ZPKFileHandle& source, std::uint64_t offset, std::uint64_t length);

private:
    static std::optional<ZPKFileHandle> adopt(ZPKFileDescriptor descriptor);
    explicit ZPKFileHandle(ZPKFileDescriptor descriptor, const struct stat& attributes)
        : m_descriptor(std::move(descriptor)), m_attributes(attributes) {}

    ZPKFileDescriptor m_descriptor;
    struct stat m_attributes;
};
