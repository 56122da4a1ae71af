// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/MadeBundle.h"

#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <utility>
#include <vector>

#include "Base/ZPKDescriptorIO.h"
#include "Base/ZPKPath.h"
#include "Platform/ZPKFileManager.h"
#include "Tools/zpkpack/PackagerFailure.h"

namespace zpk_packager {

namespace {

constexpr mode_t kPermissions = 07777;

/// What is known of the items, in bytes: some ten thousand files, where a bundle has two hundred. The
/// manifest takes several times as much.
constexpr std::size_t kMostItems = std::size_t{4} << 20;

MadePackage::Kind kindOf(mode_t mode) {
    switch (mode & S_IFMT) {
        case S_IFDIR:
            return MadePackage::Kind::Folder;
        case S_IFREG:
            return MadePackage::Kind::File;
        case S_IFLNK:
            return MadePackage::Kind::Link;
        default:
            return MadePackage::Kind::Other;
    }
}

MadePackage::Item itemAt(const std::string& bundle, const std::string& path) {
    const std::string whole = ZPKPath::join(bundle, path);
    struct stat attributes;
    if (::lstat(whole.c_str(), &attributes) != 0) {
        throw PackagerFailure::ofSystem(whole, errno);
    }
    MadePackage::Item item{path, kindOf(attributes.st_mode), attributes.st_mode & kPermissions, 0, ""};
    if (item.kind == MadePackage::Kind::File) {
        item.size = static_cast<std::uint64_t>(attributes.st_size);
    } else if (item.kind == MadePackage::Kind::Link) {
        std::array<char, PATH_MAX> target;
        const ssize_t length = ::readlink(whole.c_str(), target.data(), target.size());
        if (length < 0) {
            throw PackagerFailure::ofSystem(whole, errno);
        }
        item.target.assign(target.data(), static_cast<std::size_t>(length));
    }
    return item;
}

}  // namespace

MadeBundle::MadeBundle(const std::string& path) : MadePackage(path) {
    std::vector<Item> items;
    std::size_t size = 0;
    require(ZPKFileManager::visitFolder(path, [&](const std::string& below, ZPKFileManager::ItemKind) {
        items.push_back(itemAt(path, below));
        size += sizeof(Item) + below.size() + items.back().target.size();
        if (size > kMostItems) {
            throw PackagerFailure(path, "it holds too many files beside its archives");
        }
    }));
    setItems(std::move(items));
}

std::size_t MadeBundle::read(const Item& file, std::uint64_t offset, void* bytes, std::size_t count) {
    const std::string whole = nameOf(file.path);
    if (!m_open || m_openPath != file.path) {
        ZPKResult<ZPKFileHandle> opened = ZPKFileHandle::forReadingAt(AT_FDCWD, whole, whole);
        if (!opened) {
            throw PackagerFailure(opened.failure());
        }
        m_open.emplace(std::move(*opened));
        m_openPath = file.path;
    }
    const ssize_t got =
        ZPKDescriptorIO::readWholeAt(m_open->descriptor(), bytes, count, static_cast<off_t>(offset));
    if (got < 0) {
        throw PackagerFailure::ofSystem(whole, errno);
    }
    return static_cast<std::size_t>(got);
}

}  // namespace zpk_packager
