// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "Archive/Archive.h"
#include "Tools/zpkpack/Check/FindingList.h"

namespace zpk_packager {

/// Looks for the setup program among the members of a payload that stays packed: whether there is one is told
/// as the launcher would, what it is made of is not.
class MemberProgramCheck {
public:
    /// `exec` is what the startup description names, possibly nothing.
    explicit MemberProgramCheck(const std::string& exec);

    void visit(const zpk_archive::MemberDescription& member);

    /// After the last member; `path` is the startup description's.
    void report(const std::string& path, FindingList& findings) const;

private:
    bool isNamed() const { return !m_exec.empty(); }
    bool isFirst(const zpk_archive::MemberDescription& member) const;

    std::string m_exec;
    /// The member's name; empty where the program is not in the payload.
    std::string m_member;
    bool m_isBundle = false;
    bool m_isThere = false;
    bool m_isExecutable = false;
};

}  // namespace zpk_packager
