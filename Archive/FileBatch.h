// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "Archive/OpenFolder.h"

namespace zpk_archive {

/// Small files with all that they shall hold, to be made one after the other. In the hands of one thread at a
/// time.
class FileBatch {
public:
    /// The largest file that is worth the copy.
    static constexpr std::size_t kFileLimit = std::size_t{32} << 10;

    /// `name` is what a failure is to be reported under.
    void add(std::shared_ptr<OpenFolder> folder, const char* leaf, const std::string& name,
             std::span<const std::uint8_t> contents, const ModeAndTime& modeAndTime);
    void clear();

    bool isEmpty() const { return m_files.empty(); }
    /// Whether the last file is in this folder.
    bool endsIn(const OpenFolder& folder) const {
        return !isEmpty() && m_files.back().folder.get() == &folder;
    }
    /// No further file should be added.
    bool isFull() const;

    /// Makes what is not made yet, up to a file that cannot be made in the simple way; never throws. What
    /// stands in a file's place goes, but for a folder.
    void makeSimply();
    /// False after `makeSimply` while there is something left.
    bool isMade() const { return m_made == m_files.size(); }

    /// What the first one that is not made is to be reported under.
    const char* nameOfNext() const { return m_texts.c_str() + m_files[m_made].name; }
    /// Makes it, in the place of a file, link or empty folder. Throws MemberFailure, or VolumeFullFailure; it
    /// is removed then.
    void makeNext();
    /// Goes on behind it.
    void passNext() { ++m_made; }
    /// Removes all that was made, which has to be made again then; whether there was anything.
    bool unmake();

    /// What `FilesInFlight` knows the names by.
    std::vector<std::size_t> marks;

private:
    struct File {
        std::shared_ptr<OpenFolder> folder;
        std::size_t leaf = 0;  ///< Where its last component, and the name in the archive, begin in the texts.
        std::size_t name = 0;
        std::size_t start = 0;  ///< Of its contents.
        std::size_t size = 0;
        ModeAndTime modeAndTime;
    };

    enum class Place { FreeOfFiles, FreeOfAll };

    const File& next() const { return m_files[m_made]; }
    const char* leafOf(const File& file) const { return m_texts.c_str() + file.leaf; }
    void make(const File& file, Place place);
    ZPKFileDescriptor create(const File& file, Place place);
    void removeHalf(const File& file);

    std::vector<File> m_files;
    std::size_t m_made = 0;
    std::string m_texts;  ///< Each followed by a null character.
    std::vector<std::uint8_t> m_contents;
};

}  // namespace zpk_archive
