// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>
#include <string>

#include "Archive/Archive.h"
#include "Tools/zpkpack/Check/FindingList.h"
#include "Tools/zpkpack/Check/FolderNames.h"

namespace zpk_packager {

/// Looks at the members of one archive while it is read: what would not come out, or not as it was.
class MemberCheck {
public:
    /// `archive` is what findings name, `top` the folder that the archive holds.
    MemberCheck(std::string archive, std::string top, FindingList& findings)
        : m_archive(std::move(archive)), m_top(std::move(top)), m_findings(findings) {}

    void visit(const zpk_archive::MemberDescription& member);

    /// After the last member. `again` goes through all members once more, where that is needed.
    void finish(const FolderNames::Reader& again);

    /// The sum of the members' sizes, in bytes.
    std::uint64_t size() const { return m_size; }

    /// Where in the package a member stands, as findings name it.
    std::string nameOf(const std::string& member) const;

private:
    void checkLink(const zpk_archive::MemberDescription& member);

    std::string m_archive;
    std::string m_top;
    FindingList& m_findings;
    std::uint64_t m_size = 0;
    FolderNames m_names;
};

}  // namespace zpk_packager
