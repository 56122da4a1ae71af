// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>

#include "Archive/ByteSource.h"
#include "Archive/ErrorSink.h"

namespace zpk_archive {

/// Is told of bytes that are done since it was last told.
using ByteCounter = std::function<void(std::uint64_t bytes)>;

enum class MemberType { RegularFile, Folder, SymbolicLink, HardLink, Other };

/// What an archive says of one member.
struct MemberDescription {
    std::string name;  ///< Raw bytes, not always UTF-8.
    MemberType type = MemberType::Other;
    std::uint32_t permissions = 0;
    std::uint64_t size = 0;            ///< Bytes of data that the archive carries for this member.
    std::int64_t modifiedSeconds = 0;  ///< Since 1970-01-01 UTC.
    std::string linkTarget;  ///< Of a symbolic link its text, of a hard link the earlier member's name.
};

/// Gets the bytes of a member's data, one piece after the other.
using DataTaker = std::function<void(std::span<const std::uint8_t> piece)>;

/// Is told of a member, and says who gets its data; an empty function where nobody wants them.
using MemberReader = std::function<DataTaker(const MemberDescription&)>;

/// Packs `source` (a folder, or a single file) into a gzip-compressed CPIO archive, whose one
/// top-level entry has the source's own name: the last component of the path, after resolving a path
/// that ends in "." or "..". The same tree always gives the same bytes; owners are not recorded and
/// times have whole seconds, from 1970 on, which is all that the odc header holds.
///
/// The archive is a row of gzip members of one MiB of plain data each, which every gzip reader takes
/// and which `extract` inflates side by side. It appears at `archive` complete or not at all.
///
/// What cannot be packed (a socket, an unreadable file, a file of 8 GiB or more, a path of more than
/// 262142 bytes, a file that changes while it is read) is reported and left out, or padded to its announced
/// size; the archive stays well formed.
///
/// `user.*` extended attributes (no others, and no access lists) travel as an AppleDouble member `._NAME`
/// beside NAME: the attributes com.apple.ResourceFork and com.apple.FinderInfo in the places that the format
/// has for them, others in its attribute table. One thing has no faithful form: a file of the tree that
/// is itself called `._NAME`, lies beside NAME and holds a valid AppleDouble comes back as attributes of
/// NAME.
///
/// Errors name the source when it cannot be read, the archive when it cannot be written, and a member
/// that is left out by its own name. Each level of the tree takes a descriptor.
///
/// With a `time`, in seconds since 1970-01-01 UTC and at most `kLatestTime`, every member gets it instead of
/// its own.
///
/// `packed`, if it is given, is told how many more bytes of files are packed, on the calling thread.
///
/// Returns true when nothing was reported as an error.
bool create(const std::string& source, const std::string& archive, ErrorSink& sink,
            std::optional<std::int64_t> time = {}, const ByteCounter& packed = {});

/// What the eleven octal digits of a header hold.
constexpr std::int64_t kLatestTime = (std::int64_t{1} << 33) - 1;

/// Unpacks a CPIO archive (odc, newc, crc, binary of either byte order; gzip, bzip2 or plain) into
/// `folder`, which is made when it is missing. Members that exist already are replaced.
///
/// Nothing is ever written outside `folder`, through a symbolic link, or into a file that the archive did
/// not bring. Members with absolute or climbing names, devices, FIFOs and sockets are refused one by one.
/// Permissions are exact whatever the umask; set-user-ID and set-group-ID bits and owners are dropped.
///
/// A `._NAME` member with an AppleDouble of at most four MiB becomes the attributes of NAME, in whatever
/// order the two come. When the file system takes no such attributes, or NAME is absent or no file or
/// folder, it is kept as an ordinary file, so that nothing is lost; the first case gives a warning.
///
/// Returns true when nothing was reported as an error.
bool extract(const std::string& archive, const std::string& folder, ErrorSink& sink);

/// The same for an archive that `source` supplies; errors name it `name`.
bool extract(const std::string& name, const ByteSource& source, const std::string& folder, ErrorSink& sink);

/// Like `extract`, in a process of one thread that does nothing after it but end: when both are open,
/// and before the archive's first byte is read, the process gives up for good what it needs no more
/// (`ExtractionCage`).
bool extractInCage(const std::string& archive, const std::string& folder, ErrorSink& sink);

/// Reads the whole archive, verifying its checksums, and calls `visit` for each member in order.
/// Touches no disk but to read. Returns true when nothing was reported as an error.
bool list(const std::string& archive, const std::function<void(const MemberDescription&)>& visit,
          ErrorSink& sink);

/// The same for an archive that `source` supplies; errors name it `name`.
bool list(const std::string& name, const ByteSource& source,
          const std::function<void(const MemberDescription&)>& visit, ErrorSink& sink);

/// The same with the data of the members that `reader` wants.
bool read(const std::string& name, const ByteSource& source, const MemberReader& reader, ErrorSink& sink);

}  // namespace zpk_archive
