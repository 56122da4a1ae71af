// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "Archive/AppleDouble.h"
#include "Archive/FileIdentity.h"
#include "Archive/Member.h"
#include "Archive/MemberPath.h"

namespace zpk_archive {

class CpioReader;
class ErrorSink;
class FolderWriter;

/// Brings an archive's members into a folder, one after the other.
class Extractor {
public:
    Extractor(CpioReader& reader, FolderWriter& writer, ErrorSink& sink)
        : m_reader(reader), m_writer(writer), m_sink(sink) {}

    /// Throws ArchiveFailure where the archive is damaged; what came before is on disk then.
    void extractAll();

    /// Joins AppleDouble files with their files, and sets the attributes that had to wait. To be called
    /// also when `extractAll` has thrown.
    void finish();

private:
    /// The first of several names of one file.
    struct LinkTarget {
        MemberPath path;
        FileIdentity identity;
        std::int64_t size;
        std::int64_t modifiedSeconds;
        mode_t mode;
    };

    void extractMember(const Member& member);
    void extractByType(const Member& member, const MemberPath& path);
    void extractFile(const Member& member, const MemberPath& path);
    static bool isStranger(const Member& member, const LinkTarget& target);
    bool extractLink(const Member& member, const MemberPath& path);
    void writeNewFile(const Member& member, const MemberPath& path, const std::string* contents);
    void fill(int descriptor, const std::string* contents);
    void rememberLinkTarget(const Member& member, const MemberPath& path);

    bool mayBeAppleDouble(const Member& member, const MemberPath& path) const;
    void extractAppleDouble(const Member& member, const MemberPath& path);
    bool applyAttributes(const MemberPath& path, const MemberPath& owner, const AttributeMap& attributes);
    void joinWithOwner(const MemberPath& path);
    void removeHalf(const MemberPath& path);

    void skipData();

    CpioReader& m_reader;
    FolderWriter& m_writer;
    ErrorSink& m_sink;
    std::unordered_map<std::string, LinkTarget> m_linkTargets;
    std::vector<std::size_t> m_extracted;  ///< Hashes of the paths of all files and folders, for `finish`.
    MemberPath m_last;
    std::vector<MemberPath> m_waiting;  ///< AppleDouble files that lie on disk until all members are there.
};

}  // namespace zpk_archive
