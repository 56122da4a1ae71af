// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "Archive/Archive.h"
#include "Tools/zpkpack/Check/FindingList.h"
#include "Tools/zpkpack/MadeArchive.h"
#include "Tools/zpkpack/MemberCopy.h"

namespace zpk_packager {

/// Looks for the setup program among the members of a payload that stays packed, as the launcher would, and
/// at what it asks of a machine. The main program of an application bundle is looked for alone.
class MemberProgramCheck {
public:
    /// `exec` is what the startup description names, possibly nothing.
    explicit MemberProgramCheck(const std::string& exec);

    zpk_archive::DataTaker visit(const zpk_archive::MemberDescription& member);

    /// After the last member of `payload`; `path` is the startup description's.
    void report(const std::string& path, MadeArchive& payload, FindingList& findings) const;

private:
    bool isNamed() const { return !m_exec.empty(); }
    bool isFirst(const zpk_archive::MemberDescription& member) const;
    void reportPlace(const std::string& path, FindingList& findings) const;
    void reportProgram(MadeArchive& payload, FindingList& findings) const;

    std::string m_exec;
    /// The member's name; empty where the program is not in the payload.
    std::string m_member;
    bool m_isBundle = false;
    bool m_isThere = false;
    bool m_isExecutable = false;
    /// Of the program that would be run, as far as the members up to now tell.
    std::string m_program;
    MemberCopy m_copy;
};

}  // namespace zpk_packager
