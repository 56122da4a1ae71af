// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "Archive/AppleDouble.h"
#include "Archive/CpioReader.h"
#include "Base/ZPKFileDescriptor.h"

namespace zpk_archive {

class CpioWriter;
class ErrorSink;
class OutputFile;

/// Packs a tree, each folder's things in the order of their names' bytes.
class TreePacker {
public:
    TreePacker(CpioWriter& writer, const OutputFile& output, ErrorSink& sink);

    /// Packs `source` under the name `name`. What cannot be packed is reported, and left out.
    /// Throws ArchiveFailure when the archive cannot be written.
    void pack(const std::string& source, const std::string& name);

private:
    void packThing(int parent, const std::string& leaf, const std::string& name);
    void packOpened(const ZPKFileDescriptor& thing, const std::string& name, const struct stat& status);
    void packFolder(int folder, const std::string& name);
    void packSymbolicLink(int parent, const std::string& leaf, const std::string& name,
                          const struct stat& status);
    void packData(int file, const std::string& name, std::int64_t size);
    void packAttributes(const AttributeMap& attributes, const std::string& name, const struct stat& status);
    void startMember(Member& member, const struct stat& status);
    std::vector<std::string> sortedNames(int folder);
    void padWithZeros(std::int64_t count);

    CpioWriter& m_writer;
    const OutputFile& m_output;
    ErrorSink& m_sink;
    std::vector<std::uint8_t> m_buffer;
    /// Numbers for files with several names; the machine's own inode numbers would differ from run to
    /// run and do not fit the header.
    std::map<std::pair<dev_t, ino_t>, std::int64_t> m_inodes;
};

}  // namespace zpk_archive
