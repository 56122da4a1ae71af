// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Package/ZPKStagedItem.h"

#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <optional>

#include "Base/ZPKPath.h"
#include "Platform/ZPKHeldFolder.h"

namespace {

using Standing = ZPKStagedItem::Standing;

/// As many as the kernel follows.
constexpr int kMostLinks = 40;

/// Whether an item, a link that leads nowhere included, is at `path`. What cannot be told counts as there.
bool isSomethingAt(const std::string& path, struct stat& outAttributes) {
    return ZPKHeldFolder::look(path, outAttributes, AT_SYMLINK_NOFOLLOW) ||
           (errno != ENOENT && errno != ENOTDIR);
}

/// The way to an item of the staging folder, gone from that on: what `ZPKPath::resolved` tells goes from the
/// root on, and by whatever stands there.
class StagedWay {
public:
    explicit StagedWay(const std::string& stagingFolder)
        : m_root(ZPKPath::withoutTrailingSeparators(stagingFolder)) {}

    /// The path without links of the item that `path` leads to; nothing when it leads outside or nowhere.
    std::optional<std::string> resolved(const std::string& path);

private:
    std::string nextName();
    bool goUp();
    bool goInto(const std::string& name);
    bool follow(const std::string& link);
    bool comeBack(const std::string& outside);

    std::string m_root;
    /// Both below the root: what is behind is free of links.
    std::string m_behind;
    std::string m_ahead;
    int m_links = 0;
};

std::optional<std::string> StagedWay::resolved(const std::string& path) {
    m_behind.clear();
    m_ahead = path.substr(m_root.size());
    m_links = 0;
    while (!m_ahead.empty()) {
        const std::string name = nextName();
        const bool isPlain = !name.empty() && name != "." && name != "..";
        if ((isPlain && !goInto(name)) || (name == ".." && !goUp())) {
            return std::nullopt;
        }
    }
    return ZPKPath::join(m_root, m_behind);
}

std::string StagedWay::nextName() {
    const std::size_t end = m_ahead.find('/');
    std::string name = m_ahead.substr(0, end);
    m_ahead = end == std::string::npos ? "" : m_ahead.substr(end + 1);
    return name;
}

bool StagedWay::goUp() {
    if (m_behind.empty()) {
        return comeBack(m_root + "/..");
    }
    const std::size_t end = m_behind.rfind('/');
    m_behind.resize(end == std::string::npos ? 0 : end);
    return true;
}

bool StagedWay::goInto(const std::string& name) {
    const std::string way = ZPKPath::join(m_behind, name);
    const std::string path = ZPKPath::join(m_root, way);
    const ZPKHeldFolder::Place place = ZPKHeldFolder::placeOf(path);
    char text[PATH_MAX];
    const ssize_t length = ::readlinkat(place.folder, place.name, text, sizeof(text));
    if (length < 0) {
        m_behind = way;
        return errno == EINVAL;
    }
    return ++m_links <= kMostLinks && follow({text, static_cast<std::size_t>(length)});
}

bool StagedWay::follow(const std::string& link) {
    if (!link.starts_with('/')) {
        m_ahead = link + "/" + m_ahead;
        return true;
    }
    if (!ZPKPath::isSameOrInside(link, m_root)) {
        return comeBack(link);
    }
    m_behind.clear();
    m_ahead = link.substr(m_root.size()) + "/" + m_ahead;
    return true;
}

/// Outside nothing is held; what lies ahead may lead back in.
bool StagedWay::comeBack(const std::string& outside) {
    const std::string root = ZPKPath::resolved(m_root);
    const std::string place = ZPKPath::resolved(outside + "/" + m_ahead);
    if (root.empty() || place.empty() || !ZPKPath::isSameOrInside(place, root)) {
        return false;
    }
    m_behind.clear();
    m_ahead = place.substr(root.size());
    return true;
}

}  // namespace

ZPKStagedItem::ZPKStagedItem(const std::string& path, const std::string& stagingFolder) {
    StagedWay way(stagingFolder);
    struct stat attributes {};
    const std::optional<std::string> folder = way.resolved(ZPKPath::parent(path));
    // The dot lets a file on the way count as no folder.
    if (!folder || !ZPKHeldFolder::look(ZPKPath::join(*folder, "."), attributes)) {
        // Its folder is not there at all, or a file, which holds nothing; else a link that leads outside or
        // nowhere stands there, or a folder that may not be entered.
        const bool isThere = isSomethingAt(ZPKPath::parent(path), attributes);
        m_standing = isThere && !S_ISREG(attributes.st_mode) ? Standing::Unusable : Standing::Absent;
        return;
    }
    const std::string place = ZPKPath::join(*folder, ZPKPath::lastComponent(path));
    if (!isSomethingAt(place, attributes)) {
        m_standing = Standing::Absent;
    } else if (const std::optional<std::string> target = way.resolved(place)) {
        m_standing = Standing::Inside;
        m_place = place;
        m_target = *target;
    }
}
