// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/LinkCounts.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstring>
#include <memory>

#include "Archive/DiskCalls.h"
#include "Base/ZPKFileDescriptor.h"

namespace zpk_archive {

namespace {

bool isBefore(const LinkCounts::File& left, const LinkCounts::File& right) {
    return left.identity < right.identity;
}

struct FolderCloser {
    void operator()(DIR* folder) const { ::closedir(folder); }
};
using Folder = std::unique_ptr<DIR, FolderCloser>;

Folder openFolder(int parent, const char* name) {
    constexpr int kFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
    ZPKFileDescriptor opened = DiskCalls::open(parent, name, kFlags);
    return Folder(DiskCalls::startListing(opened));
}

bool isStep(const char* name) {
    return std::strcmp(name, ".") != 0 && std::strcmp(name, "..") != 0;
}

}  // namespace

LinkCounts LinkCounts::ofTree(int folder) {
    LinkCounts counts;
    std::vector<Folder> way;
    way.push_back(openFolder(folder, "."));
    while (!way.empty()) {
        const dirent* const item = way.back() ? DiskCalls::nextIn(way.back().get()) : nullptr;
        if (item == nullptr) {
            way.pop_back();
        } else if (isStep(item->d_name) && counts.isFolder(::dirfd(way.back().get()), *item)) {
            way.push_back(openFolder(::dirfd(way.back().get()), item->d_name));
        }
    }
    counts.keepSeveral();
    return counts;
}

bool LinkCounts::isFolder(int parent, const dirent& item) {
    if (item.d_type == DT_DIR) {
        return true;
    }
    struct stat status {};
    const bool isThere = DiskCalls::status(parent, item.d_name, status);
    if (isThere && !S_ISDIR(status.st_mode) && status.st_nlink > 1) {
        m_files.push_back({FileIdentity(status)});
    }
    return isThere && S_ISDIR(status.st_mode);
}

void LinkCounts::keepSeveral() {
    std::sort(m_files.begin(), m_files.end(), isBefore);
    auto kept = m_files.begin();
    for (auto first = m_files.begin(); first != m_files.end();) {
        const auto end = std::upper_bound(first, m_files.end(), *first, isBefore);
        if (end - first > 1) {
            *kept = *first;
            kept->names = static_cast<unsigned>(end - first);
            ++kept;
        }
        first = end;
    }
    m_files.erase(kept, m_files.end());
}

const LinkCounts::File* LinkCounts::find(const FileIdentity& file) {
    const auto found = std::lower_bound(m_files.begin(), m_files.end(), File{file}, isBefore);
    if (found == m_files.end() || found->identity != file) {
        return nullptr;
    }
    if (found->number == 0) {
        found->number = ++m_numbered;
    }
    return &*found;
}

}  // namespace zpk_archive
