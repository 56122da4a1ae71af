// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/MemberProgramCheck.h"

#include <algorithm>
#include <cstdint>
#include <string_view>

#include "Base/ZPKPath.h"
#include "Package/ZPKPackageLayout.h"

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

void MemberProgramCheck::visit(const MemberDescription& member) {
    if (isNamed() ? member.name == m_member : isFirst(member)) {
        m_isThere = true;
        m_isExecutable = m_isBundle || mayBeExecuted(member);
    }
}

/// One that is run where none is named: at the top, and not hidden.
bool MemberProgramCheck::isFirst(const MemberDescription& member) const {
    const auto depth = std::count(member.name.begin(), member.name.end(), '/');
    const std::string leaf = ZPKPath::lastComponent(member.name);
    const bool isBundle = depth == 3 && member.name.ends_with(kBundleInformation);
    return isBundle || (depth == 1 && !leaf.starts_with('.') && mayBeExecuted(member));
}

void MemberProgramCheck::report(const std::string& path, FindingList& findings) const {
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
