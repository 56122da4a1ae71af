// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Archive/Archive.h"
#include "Package/ZPKPackageLayout.h"
#include "Tools/zpkpack/Progress.h"

namespace zpk_packager {

/// A package that was made, a bundle or one file, and is looked into: nothing is written, and nothing in
/// it is believed. One thread at a time uses one. Operations throw `PackagerFailure`.
class MadePackage {
public:
    enum class Kind { Folder, File, Link, Other };

    /// One thing in the bundle, at a path from the bundle's own folder on.
    struct Item {
        std::string path;
        Kind kind = Kind::Other;
        /// Permission bits.
        mode_t mode = 0;
        /// Of a file, in bytes.
        std::uint64_t size = 0;
        /// Where a link leads.
        std::string target;
    };

    /// The bundle or the one file at `path`.
    static std::unique_ptr<MadePackage> open(const std::string& path);

    virtual ~MadePackage() = default;
    MadePackage(const MadePackage&) = delete;
    MadePackage& operator=(const MadePackage&) = delete;

    const std::string& path() const { return m_path; }

    /// All of it, by path in the order of bytes.
    const std::vector<Item>& items() const { return m_items; }

    /// Null when there is none.
    const Item* find(const std::string& path) const;

    /// Reads up to `count` bytes of a file from `offset` on; 0 at its end.
    virtual std::size_t read(const Item& file, std::uint64_t offset, void* bytes, std::size_t count) = 0;

    /// The bytes of a small file.
    std::string contents(const std::string& path, std::size_t limit);

    /// How messages name a thing in it.
    std::string nameOf(const std::string& itemPath) const;

    /// Where the archive lies in the bundle.
    static std::string archivePath(ZPKPackageLayout::Content content);

    /// The plain bytes of an archive, unscrambled while they are read. To be used while this is there.
    /// `progress`, if it is given, shows how far that has come, as `what`.
    zpk_archive::ByteSource plainArchive(ZPKPackageLayout::Content content, const std::string& what = "",
                                         Progress* progress = nullptr);

protected:
    explicit MadePackage(std::string path) : m_path(std::move(path)) {}

    void setItems(std::vector<Item> items);

private:
    std::string m_path;
    std::vector<Item> m_items;
};

}  // namespace zpk_packager
