// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/MadeArchive.h"

#include "Tools/zpkpack/CheckFailure.h"
#include "Tools/zpkpack/FirstErrorSink.h"
#include "Tools/zpkpack/MadePackage.h"

namespace zpk_packager {

MadeArchive::MadeArchive(MadePackage& package, ZPKPackageLayout::Content content, FindingList& findings,
                         Progress* progress)
    : m_package(package),
      m_content(content),
      m_findings(findings),
      m_progress(progress),
      m_name(package.nameOf(MadePackage::archivePath(content))) {}

bool MadeArchive::read(const zpk_archive::MemberReader& reader) {
    if (m_package.find(MadePackage::archivePath(m_content)) == nullptr) {
        return false;
    }
    FirstErrorSink sink;
    bool isWhole = false;
    const std::string what = std::string("reading ") + ZPKPackageLayout::name(m_content);
    CheckFailure::report(m_findings, "archive", m_name, [&] {
        isWhole =
            zpk_archive::read(m_name, m_package.plainArchive(m_content, what, m_progress), reader, sink);
    });
    if (!sink.text().empty()) {
        m_findings.add("archive", m_name, CheckFailure::reasonIn(sink.text(), m_name));
    }
    return isWhole;
}

FolderNames::Reader MadeArchive::namesAgain() {
    return [this](const FolderNames::Taker& take) {
        FindingList told;
        MadeArchive again(m_package, m_content, told, m_progress);
        static_cast<void>(again.read([&](const zpk_archive::MemberDescription& member) {
            take(member.name);
            return zpk_archive::DataTaker();
        }));
    };
}

}  // namespace zpk_packager
