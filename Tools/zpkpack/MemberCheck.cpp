// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/MemberCheck.h"

#include <sys/stat.h>

#include <algorithm>
#include <climits>
#include <string_view>

#include "Base/ZPKPath.h"
#include "Tools/zpkpack/Check/LinkTarget.h"

namespace zpk_packager {

namespace {

using zpk_archive::MemberDescription;
using zpk_archive::MemberType;

bool hasLongPart(std::string_view path) {
    for (std::size_t start = 0; start <= path.size();) {
        const std::size_t end = std::min(path.find('/', start), path.size());
        if (end - start > NAME_MAX) {
            return true;
        }
        start = end + 1;
    }
    return false;
}

}  // namespace

std::string MemberCheck::nameOf(const std::string& member) const {
    return ZPKPath::join(m_archive, member);
}

void MemberCheck::visit(const MemberDescription& member) {
    m_size += member.size;
    if (member.type == MemberType::Other) {
        m_findings.add("special-file", nameOf(member.name), "devices, sockets and FIFOs are not unpacked");
    }
    if (hasLongPart(member.name)) {
        m_findings.add("name-too-long", nameOf(member.name), "a part of the name has more than 255 bytes");
    }
    if (member.type == MemberType::SymbolicLink) {
        checkLink(member);
    }
    if (member.type == MemberType::RegularFile && (member.permissions & (S_ISUID | S_ISGID)) != 0) {
        m_findings.add("set-id", nameOf(member.name), "its set-user-ID or set-group-ID bit is dropped");
    }
    m_names.add(member.name);
}

void MemberCheck::checkLink(const MemberDescription& member) {
    const LinkTarget target(member.linkTarget);
    const auto steps = static_cast<std::size_t>(std::count(member.name.begin(), member.name.end(), '/'));
    if (target.isAbsolute()) {
        m_findings.add("link-absolute", nameOf(member.name),
                       "the link leads to \"" + member.linkTarget + "\"");
    } else if (target.climbsOutFrom(steps > 0 ? steps - 1 : 0)) {
        m_findings.add("link-outside", nameOf(member.name),
                       "the link leads to \"" + member.linkTarget + "\", which is outside " + m_top);
    }
}

void MemberCheck::finish(const FolderNames::Reader& again) {
    m_names.findAlike(again,
                      [&](const std::string& one, const std::string& other, FolderNames::Likeness likeness) {
                          const bool isCase = likeness == FolderNames::Likeness::Case;
                          m_findings.add(isCase ? "name-case" : "name-form", nameOf(other),
                                         "the name differs from \"" + ZPKPath::lastComponent(one) +
                                             "\" only in " + (isCase ? "capitals" : "its Unicode form"));
                      });
}

}  // namespace zpk_packager
