// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <sys/types.h>

#include <compare>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>

#include "Archive/FileIdentity.h"

namespace zpk_archive {

struct Member;

/// The files of an archive that have further names to come. Takes some six MiB at most: what an archive
/// brings beyond that is not known as the same file any more.
class LinkTable {
public:
    struct File {
        std::string name;  ///< The first one, or what `preferName` put in its place.
        FileIdentity identity;
        std::int64_t size = 0;
        unsigned namesToCome = 0;
    };

    /// The file that the member is another name of, by the archive's own numbers; null when none is known.
    /// Archives with few bits for these give strangers the same ones; what differs in time or mode is one.
    File* find(const Member& member);

    /// Keeps the member's first name. Nothing happens when it says that no other will come.
    void remember(const Member& member, std::string name, const FileIdentity& identity);

    /// Takes the name for the file's where it is the shorter one: the way to a name costs as much as it is
    /// long, and each link goes it, so that one long name must not make many short ones dear.
    void preferName(File& file, const std::string& name);

    /// A further name of what `find` gave has come; after the last one the file is forgotten.
    void countName(const Member& member, File& file);

    /// True once files were forgotten that could have got their data with a later name.
    bool hasForgottenEmptyFiles() const { return m_hasForgottenEmptyFiles; }

private:
    struct Key {
        auto operator<=>(const Key&) const = default;  // NOLINT(modernize-use-nullptr): there is none

        std::uint64_t device;
        std::uint64_t inode;
        std::int64_t modifiedSeconds;
        mode_t mode;
    };

    static Key keyOf(const Member& member);
    static std::size_t costOf(const File& file) { return kNodeSize + file.name.size(); }
    void forgetAll();

    static constexpr std::size_t kNodeSize = 192;

    /// Ordered and not hashed: no archive can make a search in it slow.
    std::map<Key, File> m_files;
    std::size_t m_cost = 0;
    bool m_hasForgottenEmptyFiles = false;
};

}  // namespace zpk_archive
