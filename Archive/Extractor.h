// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "Archive/AttributeJoiner.h"
#include "Archive/LinkTable.h"
#include "Archive/Member.h"
#include "Archive/MemberPath.h"

namespace zpk_archive {

class CpioReader;
class ErrorSink;
class FolderWriter;

/// Brings an archive's members into a folder, one after the other. What it keeps of them is bounded,
/// whatever their number.
class Extractor {
public:
    /// What the writer could not make later on is reported as long as this object lives.
    Extractor(CpioReader& reader, FolderWriter& writer, ErrorSink& sink);
    ~Extractor();
    Extractor(const Extractor&) = delete;
    Extractor& operator=(const Extractor&) = delete;

    /// Throws ArchiveFailure where the archive is damaged; what came before is on disk then.
    void extractAll();

    /// Joins AppleDouble files with their files, and sets the attributes that had to wait. To be called
    /// also when `extractAll` has thrown.
    void finish();

private:
    void extractMembers();
    void report(const std::string& name, const std::string& reason);
    void fileFailed(const std::string& name, const std::string& reason);
    void extractMember(const Member& member);
    void extractByType(const Member& member, const MemberPath& path);
    void extractFile(const Member& member, const MemberPath& path);
    bool extractLink(const Member& member, const MemberPath& path);
    static bool isSizeOf(const LinkTable::File& file, const Member& member);
    void throwIfDataAreMissed(const Member& member) const;
    void writeNewFile(const Member& member, const MemberPath& path, const std::string* contents);
    bool sendSmallFile(const Member& member, const MemberPath& path);
    std::span<const std::uint8_t> wholeData(const MemberPath& path);
    void fill(int descriptor, const std::string* contents);
    void rememberLinkTarget(const Member& member, const MemberPath& path);

    static bool mayBeAppleDouble(const Member& member, const MemberPath& path);
    void extractAppleDouble(const Member& member, const MemberPath& path);
    void removeHalf(const MemberPath& path);

    void skipData();

    CpioReader& m_reader;
    FolderWriter& m_writer;
    ErrorSink& m_sink;
    LinkTable m_links;
    AttributeJoiner m_joiner;
    std::vector<std::uint8_t> m_gathered;  ///< Of a small file whose data lie in two blocks.
};

}  // namespace zpk_archive
