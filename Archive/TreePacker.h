// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "Archive/AppleDouble.h"
#include "Archive/LinkCounts.h"
#include "Archive/Member.h"
#include "Base/ZPKFileDescriptor.h"
#include "Base/ZPKNameBatch.h"

namespace zpk_archive {

class CpioWriter;
class ErrorSink;
class OutputFile;

/// Packs one tree, each folder's things in the order of their names' bytes. The way down is kept in
/// memory of its own and not on the stack, so that a tree may be as deep as there are descriptors. The names
/// of large folders are kept in part, and read again.
class TreePacker {
public:
    /// Opens what is to be packed: a folder or a file, or a link to one. Throws ArchiveFailure.
    static ZPKFileDescriptor openSource(const std::string& path);

    /// With a `time`, every member gets it instead of its own. `packed`, if it is given, is told of the bytes
    /// of files.
    TreePacker(CpioWriter& writer, const OutputFile& output, ErrorSink& sink,
               std::optional<std::int64_t> time = {}, std::function<void(std::uint64_t)> packed = {});

    /// Packs `source` under the name `name`. What cannot be packed is reported, and left out.
    /// Throws ArchiveFailure when the archive cannot be written.
    void pack(ZPKFileDescriptor source, const std::string& name);

private:
    /// A folder whose things are being packed.
    struct OpenFolder {
        ZPKFileDescriptor descriptor;
        std::size_t nameLength;  ///< Of the folder's own name, at the start of `m_name`.
        ZPKNameBatch leaves;     ///< What is still to come.
    };

    void packSource(ZPKFileDescriptor source);
    void packNext(OpenFolder& folder);
    void readMore(OpenFolder& folder);
    void enter(ZPKFileDescriptor folder);
    void packThing(int parent, const std::string& leaf);
    void packOpened(ZPKFileDescriptor thing, const struct stat& status);
    void packSymbolicLink(int parent, const std::string& leaf, const struct stat& status);
    void packData(int file, std::int64_t size);
    void packAttributes(const AttributeMap& attributes, const struct stat& status);
    AttributeMap attributesOf(int thing);
    void startMember(Member& member, const struct stat& status);
    void numberLink(Member& member, const struct stat& status);
    void padWithZeros(std::int64_t count);

    CpioWriter& m_writer;
    const OutputFile& m_output;
    ErrorSink& m_sink;
    std::optional<std::int64_t> m_time;
    std::function<void(std::uint64_t)> m_packed;
    std::string m_name;  ///< Of the member at hand.
    std::vector<OpenFolder> m_way;
    std::vector<std::uint8_t> m_buffer;
    std::optional<LinkCounts> m_links;  ///< Counted when the first file comes that has several names.
};

}  // namespace zpk_archive
