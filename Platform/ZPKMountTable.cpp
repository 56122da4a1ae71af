// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Platform/ZPKMountTable.h"

#include <libmount/libmount.h>

#include <algorithm>
#include <cstdlib>
#include <memory>

namespace {

struct TableRelease {
    void operator()(libmnt_table* table) const { mnt_unref_table(table); }
};
struct IteratorFree {
    void operator()(libmnt_iter* iterator) const { mnt_free_iter(iterator); }
};
struct MemoryFree {
    void operator()(char* memory) const { std::free(memory); }
};

/// One broken line must not hide the rest.
int skipBrokenLine(libmnt_table*, const char*, int) {
    return 1;
}

std::string textOrEmpty(const char* text) {
    return text == nullptr ? std::string() : std::string(text);
}

/// True when `path` is the folder `mountPoint` or lies below it.
bool liesBelow(const std::string& path, const std::string& mountPoint) {
    if (mountPoint == "/") {
        return true;
    }
    return path.starts_with(mountPoint) &&
           (path.size() == mountPoint.size() || path[mountPoint.size()] == '/');
}

}  // namespace

ZPKMountTable ZPKMountTable::current() {
    return ZPKMountTable("/proc/self/mountinfo");
}

ZPKMountTable::ZPKMountTable(const std::string& file) {
    const std::unique_ptr<libmnt_table, TableRelease> table(mnt_new_table());
    const std::unique_ptr<libmnt_iter, IteratorFree> iterator(mnt_new_iter(MNT_ITER_FORWARD));
    if (!table || !iterator) {
        return;
    }
    mnt_table_set_parser_errcb(table.get(), skipBrokenLine);
    if (mnt_table_parse_file(table.get(), file.c_str()) != 0) {
        return;
    }
    libmnt_fs* fileSystem = nullptr;
    while (mnt_table_next_fs(table.get(), iterator.get(), &fileSystem) == 0) {
        m_mounts.push_back({textOrEmpty(mnt_fs_get_source(fileSystem)),
                            textOrEmpty(mnt_fs_get_target(fileSystem)), mnt_fs_get_devno(fileSystem)});
    }
}

std::optional<ZPKMount> ZPKMountTable::mountOfPath(const std::string& path) const {
    const std::unique_ptr<char, MemoryFree> resolved(::realpath(path.c_str(), nullptr));
    if (!resolved) {
        return std::nullopt;
    }
    const std::string item = resolved.get();
    // The deepest mount point counts, and of several mounts on one point the last.
    const ZPKMount* best = nullptr;
    for (const ZPKMount& mount : m_mounts) {
        if (liesBelow(item, mount.target) &&
            (best == nullptr || mount.target.size() >= best->target.size())) {
            best = &mount;
        }
    }
    return best == nullptr ? std::nullopt : std::optional(*best);
}
