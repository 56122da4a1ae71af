// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "Archive/Archive.h"

namespace zpk_packager {

/// A member of an archive in a listing; every text is harmless and has no line feed.
class MemberText {
public:
    MemberText() = delete;

    static std::string line(const zpk_archive::MemberDescription& member);

    /// Also type and permissions, size, time in UTC, and where a link leads.
    static std::string longLine(const zpk_archive::MemberDescription& member);

    /// All of it, and the name of its archive, as an object. Bytes of a name that are no UTF-8 are U+FFFD
    /// in it; then `nameBytes` has the whole name in hexadecimal digits.
    static std::string json(const zpk_archive::MemberDescription& member, const std::string& archive);
};

}  // namespace zpk_packager
