// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <sys/stat.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "Base/ZPKFailure.h"
#include "Base/ZPKFileDescriptor.h"

/// An open regular file. Nothing here waits on a FIFO or a device: such items are refused.
/// One thread uses one handle.
class ZPKFileHandle {
public:
    /// The regular file that `path` leads to, for reading.
    static ZPKResult<ZPKFileHandle> forReadingAtPath(const std::string& path);

    /// The file `name` of an open folder; a link is refused. `path` is for people to read.
    static ZPKResult<ZPKFileHandle> forReadingAt(int folder, const std::string& name,
                                                 const std::string& path);

    /// A new empty file in place of the file, link or other item at `path`; what a link leads to and
    /// the other names of a file stay as they are. Fails when it cannot be made or a folder is there.
    static ZPKResult<ZPKFileHandle> replacingFileAtPath(const std::string& path);

    /// The regular file at `path` without its contents, which its other names then lose, too: for one that
    /// may be written and not replaced. A link is refused.
    static ZPKResult<ZPKFileHandle> emptyingFileAtPath(const std::string& path);

    /// A file that is open for writing already, on a descriptor of this object's own. `path` is for people
    /// to read.
    static ZPKResult<ZPKFileHandle> forWritingTo(int descriptor, const std::string& path);

    /// A new empty file `name` of an open folder, with `mode` less the umask; fails when anything is
    /// there already. `path` is for people to read.
    static ZPKResult<ZPKFileHandle> newFileAt(int folder, const std::string& name, unsigned int mode,
                                              const std::string& path);

    /// Open as long as this object is there; stays this object's.
    int descriptor() const { return m_descriptor.get(); }

    /// The path that failures name.
    const std::string& path() const { return m_path; }

    /// What the file system said of the file when it was opened.
    const struct stat& attributes() const { return m_attributes; }

    /// Size in bytes when the file was opened.
    std::uint64_t size() const { return static_cast<std::uint64_t>(m_attributes.st_size); }

    /// The bytes of the file from its start; fails when there are more than `limit` of them. A file
    /// that grows meanwhile is read no further than that.
    ZPKResult<std::string> contents(std::size_t limit) const;

    /// Tells the file system how large the file is about to become, in bytes, so that it can lay it
    /// out at once; the size stays as it is. A mere hint: failures do not count.
    void reserve(std::uint64_t size);

    /// Appends `length` bytes of `source` from `offset` on; memory use does not depend on the length.
    /// Fails when the source ends before or a write fails; what was written stays.
    ZPKOutcome append(const ZPKFileHandle& source, std::uint64_t offset, std::uint64_t length);

private:
    static ZPKResult<ZPKFileHandle> adopt(ZPKFileDescriptor descriptor, const std::string& path);
    ZPKFileHandle(ZPKFileDescriptor descriptor, std::string path, const struct stat& attributes)
        : m_descriptor(std::move(descriptor)), m_path(std::move(path)), m_attributes(attributes) {}

    ZPKFileDescriptor m_descriptor;
    std::string m_path;
    struct stat m_attributes;
};
