// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/MemberProgramCheck.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <set>
#include <string_view>

#include "Base/ZPKPath.h"
#include "Package/ZPKPackageLayout.h"
#include "Tools/zpkpack/Check/ProgramCheck.h"

namespace zpk_packager {

namespace {

using zpk_archive::MemberDescription;
using zpk_archive::MemberType;

constexpr std::string_view kBundleInformation = "/Contents/Info.plist";
constexpr std::uint32_t kExecutable = 0111;

bool mayBeExecuted(const MemberDescription& member) {
    const bool isFile = member.type == MemberType::RegularFile || member.type == MemberType::HardLink;
    // What a link leads to is not looked for.
    return member.type == MemberType::SymbolicLink || (isFile && (member.permissions & kExecutable) != 0);
}

/// Without what a path says twice: a run path may climb.
std::string normalized(const std::string& path) {
    return std::filesystem::path(path).lexically_normal().string();
}

}  // namespace

MemberProgramCheck::MemberProgramCheck(const std::string& exec)
    : m_exec(exec), m_isBundle(ZPKPath::extension(exec) == "app") {
    const std::string token = std::string(ZPKPackageLayout::kDataFolderToken) + "/";
    if (exec.starts_with(token)) {
        m_member =
            ZPKPath::join(ZPKPackageLayout::name(ZPKPackageLayout::Content::Data), exec.substr(token.size()));
        m_member += m_isBundle ? kBundleInformation : "";
    }
}

zpk_archive::DataTaker MemberProgramCheck::visit(const MemberDescription& member) {
    if (isNamed() ? member.name != m_member : !isFirst(member)) {
        return {};
    }
    m_isThere = true;
    m_isExecutable = m_isBundle || mayBeExecuted(member);
    // Of several that are not named, the first by name is run, wherever it stands in the archive.
    if (!m_program.empty() && member.name > m_program) {
        return {};
    }
    m_program = member.name;
    m_copy.clear();
    const bool isFile = member.type == MemberType::RegularFile && !member.name.ends_with(kBundleInformation);
    return isFile && m_isExecutable ? m_copy.taker(member.size) : zpk_archive::DataTaker();
}

/// One that is run where none is named: at the top, and not hidden.
bool MemberProgramCheck::isFirst(const MemberDescription& member) const {
    const auto depth = std::count(member.name.begin(), member.name.end(), '/');
    const std::string leaf = ZPKPath::lastComponent(member.name);
    const bool isBundle = depth == 3 && member.name.ends_with(kBundleInformation);
    return isBundle || (depth == 1 && !leaf.starts_with('.') && mayBeExecuted(member));
}

void MemberProgramCheck::report(const std::string& path, MadeArchive& payload, FindingList& findings) const {
    reportPlace(path, findings);
    if (m_copy.isWhole()) {
        reportProgram(payload, findings);
    }
}

/// A library is looked for in the payload only where the machine is not known to have it: that takes another
/// reading.
void MemberProgramCheck::reportProgram(MadeArchive& payload, FindingList& findings) const {
    const std::string shown = ZPKPath::join(payload.name(), m_program);
    const ZPKResult<ProgramFile> program = ProgramFile::read(m_copy.descriptor(), shown);
    std::set<std::string> asked;
    FindingList ignored;
    ProgramCheck(ignored).look(shown, program, [&](const std::string& library) {
        asked.insert(normalized(library));
        return false;
    });
    std::set<std::string> brought;
    if (!asked.empty()) {
        payload.namesAgain()([&](const std::string& name) {
            if (const std::string member = ZPKPath::join(payload.name(), name); asked.contains(member)) {
                brought.insert(member);
            }
        });
    }
    ProgramCheck(findings).look(
        shown, program, [&](const std::string& library) { return brought.contains(normalized(library)); });
}

void MemberProgramCheck::reportPlace(const std::string& path, FindingList& findings) const {
    const std::string exec = "\"" + m_exec + "\" ";
    if (!isNamed()) {
        if (!m_isThere) {
            findings.add("no-program", path,
                         "no program is named, and none that may be executed is at the top of Data");
        }
    } else if (m_member.empty()) {
        findings.add("exec-outside", path, exec + "is not in Data, so it is not in the package");
    } else if (!m_isThere && m_isBundle) {
        findings.add("exec-bundle", path, exec + "is no bundle with a main program");
    } else if (!m_isThere) {
        findings.add("exec-missing", path, exec + "is not there");
    } else if (!m_isExecutable) {
        findings.add("exec-not-executable", path, exec + "is no file that may be executed");
    }
}

}  // namespace zpk_packager
