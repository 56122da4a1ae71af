// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/Check/PayloadCheck.h"

#include <fcntl.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdint>

#include "Base/ZPKFailure.h"
#include "Base/ZPKPath.h"
#include "Tools/zpkpack/Check/FolderNames.h"
#include "Tools/zpkpack/Check/LinkTarget.h"

namespace zpk_packager {

namespace {

constexpr std::int64_t kFileTooLarge = std::int64_t{8} << 30;
/// The names that all folders on the way down may keep, in bytes.
constexpr std::size_t kNamesOnTheWay = std::size_t{10} << 20;

constexpr mode_t kReadableByAll = S_IRUSR | S_IRGRP | S_IROTH;

/// Extended attributes travel in a file whose name is longer by this.
constexpr std::size_t kAttributePrefix = 2;

const char* kindOf(mode_t mode) {
    switch (mode & S_IFMT) {
        case S_IFIFO:
            return "a FIFO";
        case S_IFSOCK:
            return "a socket";
        default:
            return "a device";
    }
}

}  // namespace

void PayloadCheck::run(const std::string& folder) {
    m_top = m_path = folder;
    // Of a link, what it leads to is meant.
    if (!m_walker.enterAt(AT_FDCWD, ZPKPath::resolved(folder))) {
        reportUnreadable(folder);
        return;
    }
    m_levels.emplace_back();
    readNames(m_levels.back());
    checkNames();
    while (m_walker.isInside()) {
        ZPKNameBatch& names = m_levels.back();
        if (names.isEmpty() && names.isPart()) {
            readNames(names);
        }
        if (!names.isEmpty()) {
            checkItem(names.take());
            continue;
        }
        m_levels.pop_back();
        m_path = m_path.size() > m_top.size() ? m_path.substr(0, m_path.rfind('/')) : m_top;
        if (!m_walker.leave()) {
            m_findings.add("unreadable", m_path, "it was moved while it was looked at");
        }
    }
}

void PayloadCheck::readNames(ZPKNameBatch& names) {
    names.begin();
    if (!m_walker.visitEntries([&](const char* name, unsigned char) { names.offer(name); })) {
        reportUnreadable(m_path);
    }
    names.end();
}

/// Of the folder that the walk is in.
void PayloadCheck::checkNames() {
    FolderNames names;
    // What cannot be read was told when the folder was entered.
    const auto visitAll = [&](const FolderNames::Taker& take) {
        static_cast<void>(m_walker.visitEntries([&](const char* name, unsigned char) { take(name); }));
    };
    visitAll([&](const std::string& name) { names.add(name); });
    names.findAlike(visitAll,
                    [&](const std::string& one, const std::string& other, FolderNames::Likeness likeness) {
                        const bool isCase = likeness == FolderNames::Likeness::Case;
                        m_findings.add(isCase ? "name-case" : "name-form", pathOf(other),
                                       "the name differs from \"" + one + "\" only in " +
                                           (isCase ? "capitals" : "its Unicode form"));
                    });
}

/// They are read again on the way back.
void PayloadCheck::forgetUpperNames() {
    std::size_t memory = 0;
    for (const ZPKNameBatch& names : m_levels) {
        memory += names.memory();
    }
    if (memory > kNamesOnTheWay) {
        std::for_each(m_levels.begin(), m_levels.end(), [](ZPKNameBatch& names) { names.forget(); });
    }
}

void PayloadCheck::checkItem(const std::string& name) {
    struct stat attributes;
    if (::fstatat(m_walker.descriptor(), name.c_str(), &attributes, AT_SYMLINK_NOFOLLOW) != 0) {
        reportUnreadable(pathOf(name));
        return;
    }
    if (S_ISDIR(attributes.st_mode)) {
        enter(name);
    } else if (S_ISREG(attributes.st_mode)) {
        checkFile(name, attributes);
    } else if (S_ISLNK(attributes.st_mode)) {
        checkLink(name);
    } else {
        m_findings.add("special-file", pathOf(name),
                       std::string(kindOf(attributes.st_mode)) + " cannot be packed");
    }
}

void PayloadCheck::enter(const std::string& name) {
    if (!m_walker.enter(name)) {
        reportUnreadable(pathOf(name));
        return;
    }
    m_path += '/' + name;
    forgetUpperNames();
    m_levels.emplace_back();
    readNames(m_levels.back());
    checkNames();
}

void PayloadCheck::checkFile(const std::string& name, const struct stat& attributes) {
    const int folder = m_walker.descriptor();
    const bool isClosed = (attributes.st_mode & kReadableByAll) != kReadableByAll;
    if (isClosed && ::faccessat(folder, name.c_str(), R_OK, AT_EACCESS) != 0) {
        reportUnreadable(pathOf(name));
    }
    if (attributes.st_size >= kFileTooLarge) {
        m_findings.add("file-too-large", pathOf(name),
                       "it has " + std::to_string(attributes.st_size) + " bytes, 8 GiB or more");
    }
    if ((attributes.st_mode & (S_ISUID | S_ISGID)) != 0) {
        m_findings.add("set-id", pathOf(name),
                       std::string("its set-") + ((attributes.st_mode & S_ISUID) != 0 ? "user" : "group") +
                           "-ID bit is dropped");
    }
    if (name.size() + kAttributePrefix > NAME_MAX && ::listxattr(pathOf(name).c_str(), nullptr, 0) > 0) {
        m_findings.add("name-too-long", pathOf(name),
                       "with " + std::to_string(name.size()) +
                           " bytes it leaves no room for what its extended attributes are packed as");
    }
}

void PayloadCheck::checkLink(const std::string& name) {
    std::array<char, PATH_MAX + 1> buffer;
    const ssize_t length = ::readlinkat(m_walker.descriptor(), name.c_str(), buffer.data(), buffer.size());
    if (length < 0) {
        reportUnreadable(pathOf(name));
        return;
    }
    const std::string text(buffer.data(), static_cast<std::size_t>(length));
    const LinkTarget target(text);
    if (target.isAbsolute()) {
        m_findings.add("link-absolute", pathOf(name), "the link leads to \"" + text + "\"");
    } else if (target.climbsOutFrom(m_levels.size() - 1)) {
        m_findings.add(
            "link-outside", pathOf(name),
            "the link leads to \"" + text + "\", which is outside " + ZPKPath::lastComponent(m_top));
    }
}

/// What just failed, at `path`.
void PayloadCheck::reportUnreadable(const std::string& path) {
    m_findings.add("unreadable", path, "it cannot be read: " + ZPKFailure::systemReason(errno));
}

std::string PayloadCheck::pathOf(const std::string& name) const {
    return ZPKPath::join(m_path, name);
}

}  // namespace zpk_packager
