// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/MadePackage.h"

#include <algorithm>
#include <array>
#include <utility>

#include "Base/ZPKPath.h"
#include "Package/ZPKScrambler.h"
#include "Platform/ZPKFileManager.h"
#include "Tools/zpkpack/MadeBundle.h"
#include "Tools/zpkpack/MadeRunFile.h"
#include "Tools/zpkpack/PackagerFailure.h"

namespace zpk_packager {

namespace {

constexpr const char* kResourceFolder = "Contents/Resources";

bool isBefore(const MadePackage::Item& item, const std::string& path) {
    return item.path < path;
}

/// Reads the pieces of a scrambled archive in the order of the plain one.
class PlainArchiveReader {
public:
    PlainArchiveReader(MadePackage& package, const MadePackage::Item& archive, Progress* progress)
        : m_package(&package),
          m_archive(&archive),
          m_progress(progress),
          m_pieces(ZPKScrambler::piecesOfPlain(archive.size)) {}

    std::size_t operator()(std::uint8_t* bytes, std::size_t count) {
        while (m_current < m_pieces.size() && m_pieces[m_current].size == 0) {
            ++m_current;
        }
        if (m_current == m_pieces.size()) {
            return 0;
        }
        ZPKScrambler::Piece& piece = m_pieces[m_current];
        const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(count, piece.size));
        const std::size_t got = m_package->read(*m_archive, piece.offset, bytes, wanted);
        if (got == 0) {
            throw PackagerFailure("it became shorter while it was read");
        }
        piece.offset += got;
        piece.size -= got;
        if (m_progress != nullptr) {
            m_progress->advance(got);
        }
        return got;
    }

private:
    MadePackage* m_package;
    const MadePackage::Item* m_archive;
    Progress* m_progress;
    std::array<ZPKScrambler::Piece, 2> m_pieces;
    std::size_t m_current = 0;
};

}  // namespace

std::unique_ptr<MadePackage> MadePackage::open(const std::string& path) {
    if (ZPKFileManager::isFolder(path)) {
        return std::make_unique<MadeBundle>(path);
    }
    return std::make_unique<MadeRunFile>(path);
}

void MadePackage::setItems(std::vector<Item> items) {
    m_items = std::move(items);
    std::sort(m_items.begin(), m_items.end(),
              [](const Item& one, const Item& other) { return one.path < other.path; });
}

const MadePackage::Item* MadePackage::find(const std::string& path) const {
    const auto found = std::lower_bound(m_items.begin(), m_items.end(), path, isBefore);
    return found != m_items.end() && found->path == path ? &*found : nullptr;
}

std::string MadePackage::contents(const std::string& path, std::size_t limit) {
    const Item* const item = find(path);
    if (item == nullptr || item->kind != Kind::File) {
        throw PackagerFailure(nameOf(path), item == nullptr ? "it is missing" : "it is no file");
    }
    if (item->size > limit) {
        throw PackagerFailure(nameOf(path), "it is too large");
    }
    std::string bytes(static_cast<std::size_t>(item->size), '\0');
    std::size_t size = 0;
    while (size < bytes.size()) {
        const std::size_t got = read(*item, size, bytes.data() + size, bytes.size() - size);
        if (got == 0) {
            throw PackagerFailure(nameOf(path), "it became shorter while it was read");
        }
        size += got;
    }
    return bytes;
}

std::string MadePackage::nameOf(const std::string& itemPath) const {
    return ZPKPath::join(m_path, itemPath);
}

std::string MadePackage::archivePath(ZPKPackageLayout::Content content) {
    return ZPKPackageLayout::scrambledArchive(kResourceFolder, content);
}

zpk_archive::ByteSource MadePackage::plainArchive(ZPKPackageLayout::Content content, const std::string& what,
                                                  Progress* progress) {
    const std::string path = archivePath(content);
    const Item* const item = find(path);
    if (item == nullptr || item->kind != Kind::File) {
        throw PackagerFailure(nameOf(path), item == nullptr ? "it is missing" : "it is no file");
    }
    if (progress != nullptr) {
        progress->begin(what, item->size);
    }
    return PlainArchiveReader(*this, *item, progress);
}

}  // namespace zpk_packager
