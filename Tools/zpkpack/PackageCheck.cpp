// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/PackageCheck.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

#include "Archive/Archive.h"
#include "Base/ZPKDescriptorIO.h"
#include "Base/ZPKPath.h"
#include "Description/CStartupType.h"
#include "Description/CZPKXMLLoader.h"
#include "Platform/ZPKBundle.h"
#include "Platform/ZPKFileHandle.h"
#include "Platform/ZPKFileManager.h"
#include "Platform/ZPKStandardFolders.h"
#include "Tools/zpkpack/BundlePartsCheck.h"
#include "Tools/zpkpack/Check/CheckRules.h"
#include "Tools/zpkpack/Check/ConditionCheck.h"
#include "Tools/zpkpack/Check/LanguageNamesCheck.h"
#include "Tools/zpkpack/Check/LanguagesCheck.h"
#include "Tools/zpkpack/Check/SourceText.h"
#include "Tools/zpkpack/Check/StartupCheck.h"
#include "Tools/zpkpack/Check/TablesCheck.h"
#include "Tools/zpkpack/CheckFailure.h"
#include "Tools/zpkpack/FirstErrorSink.h"
#include "Tools/zpkpack/MadeArchive.h"
#include "Tools/zpkpack/MadePackage.h"
#include "Tools/zpkpack/Manifest.h"
#include "Tools/zpkpack/MemberCheck.h"
#include "Tools/zpkpack/MemberProgramCheck.h"
#include "Tools/zpkpack/PackagerFailure.h"
#include "Tools/zpkpack/SignalHold.h"
#include "Tools/zpkpack/WorkFolder.h"

using varno_zpk::CStartupType;
using varno_zpk::CZPKXMLLoader;

namespace zpk_packager {

namespace {

using Content = ZPKPackageLayout::Content;

constexpr const char* kResourceFolder = "Contents/Resources";
constexpr std::size_t kResourcePart = std::string_view("Contents/Resources/").size();
constexpr std::size_t kMostLanguageItems = 2000;
constexpr unsigned int kPrivate = 0700;
constexpr std::uint64_t kLargestDescriptions = std::uint64_t{16} << 20;

bool isOfALanguage(const std::string& name) {
    return name == "Languages.xml" || name == "ZPKStringTable.def" || name == "ZPKPlatformStringTable.def" ||
           name == "InfoPlist.strings";
}

void writeFile(const std::string& path, const std::string& bytes) {
    const ZPKResult<ZPKFileHandle> file = ZPKFileHandle::replacingFileAtPath(path);
    if (!file || !ZPKDescriptorIO::writeWhole(file->descriptor(), bytes)) {
        throw PackagerFailure(file ? ZPKFailure::ofSystem(path, errno) : file.failure());
    }
}

}  // namespace

bool PackageCheck::isMeant(const std::string& path) {
    if (ZPKFileManager::isFolder(path)) {
        return ZPKBundle::bundleWithPath(path) || ZPKPath::extension(path) == "app";
    }
    return ZPKFileManager::fileExists(path);
}

void PackageCheck::run(const std::string& path) {
    std::unique_ptr<MadePackage> package;
    CheckFailure::report(m_findings, "bundle-part", path, [&] { package = MadePackage::open(path); });
    if (package) {
        checkAll(*package);
    }
    m_findings.finish();
}

void PackageCheck::checkAll(MadePackage& package) {
    BundlePartsCheck(package, m_findings).run();
    checkManifest(package);
    const std::string exec = checkTexts(package, checkDescriptionArchive(package));
    checkPayloadArchive(package, exec);
}

/// Small, however large the package is, and the only part with a folder that would stay after a signal.
std::string PackageCheck::checkTexts(MadePackage& package, bool withDescriptions) {
    const SignalHold signals;
    const WorkFolder folder =
        WorkFolder::beside(ZPKPath::join(ZPKStandardFolders::temporaryFolder().value_or("/tmp"), "zpkpack"));
    if (withDescriptions) {
        checkDescriptions(package, folder.path());
    }
    checkLanguages(package, folder.path());
    const std::unique_ptr<CStartupType> startup(
        CZPKXMLLoader::LoadStartupXML(ZPKPackageLayout::startupDescription(folder.path())));
    return startup ? startup->exec : "";
}

void PackageCheck::checkManifest(MadePackage& package) {
    CheckFailure::report(m_findings, "manifest", package.nameOf(Manifest::kPath), [&] {
        const Manifest expected = Manifest::inPackage(package);
        for (const Manifest::Difference& difference :
             expected.differencesTo(Manifest::ofPackage(package, m_progress))) {
            if (difference.kind != Manifest::Difference::Kind::Added) {
                m_findings.add("manifest", package.nameOf(difference.path),
                               difference.kind == Manifest::Difference::Kind::Missing
                                   ? "it was built, and is missing"
                                   : "it is not what was built");
            }
        }
    });
}

bool PackageCheck::checkDescriptionArchive(MadePackage& package) {
    MadeArchive archive(package, Content::Info, m_findings, m_progress);
    MemberCheck members(archive.name(), ZPKPackageLayout::name(Content::Info), m_findings);
    const bool isWhole = archive.read([&](const zpk_archive::MemberDescription& member) {
        members.visit(member);
        return zpk_archive::DataTaker();
    });
    members.finish(archive.namesAgain());
    if (members.size() > kLargestDescriptions) {
        m_findings.add("too-large", archive.name(), "it holds more than 16 MiB, so it was not looked at");
        return false;
    }
    return isWhole;
}

void PackageCheck::checkPayloadArchive(MadePackage& package, const std::string& exec) {
    MadeArchive archive(package, Content::Data, m_findings, m_progress);
    MemberProgramCheck program(exec);
    MemberCheck members(archive.name(), ZPKPackageLayout::name(Content::Data), m_findings);
    const bool isWhole = archive.read([&](const zpk_archive::MemberDescription& member) {
        members.visit(member);
        return program.visit(member);
    });
    members.finish(archive.namesAgain());
    if (isWhole) {
        program.report(
            ZPKPackageLayout::startupDescription(package.nameOf(MadePackage::archivePath(Content::Info))),
            archive, m_findings);
    }
}

void PackageCheck::checkDescriptions(MadePackage& package, const std::string& folder) {
    const std::string name = package.nameOf(MadePackage::archivePath(Content::Info));
    FirstErrorSink sink;
    CheckFailure::report(m_findings, "archive", name, [&] {
        if (!zpk_archive::extract(name, package.plainArchive(Content::Info), folder, sink)) {
            m_findings.add("archive", name, CheckFailure::reasonIn(sink.text(), name));
        }
    });
    FindingList found;
    StartupCheck(found).run(folder);
    ConditionCheck(found).run(folder);
    takeOver(found, folder, name);
}

/// The list and the tables alone, and as many of them as a package may have in earnest.
void PackageCheck::copyLanguages(MadePackage& package, const std::string& folder) {
    const std::string top = ZPKPackageLayout::languageFolder(kResourceFolder) + "/";
    std::size_t left = kMostLanguageItems;
    for (const MadePackage::Item& item : package.items()) {
        const std::string copy =
            ZPKPath::join(folder, item.path.substr(std::min(item.path.size(), kResourcePart)));
        if (!item.path.starts_with(top) || item.path.find("..") != std::string::npos || left == 0) {
            continue;
        }
        --left;
        if (item.kind == MadePackage::Kind::Folder) {
            require(ZPKFileManager::createFolderWithIntermediateFolders(copy, kPrivate));
        } else if (item.kind == MadePackage::Kind::File && isOfALanguage(ZPKPath::lastComponent(copy))) {
            CheckFailure::report(m_findings, "unreadable", package.nameOf(item.path), [&] {
                require(ZPKFileManager::createFolderWithIntermediateFolders(ZPKPath::parent(copy), kPrivate));
                writeFile(copy, package.contents(item.path, SourceText::kLargestFile));
            });
        }
    }
}

void PackageCheck::checkLanguages(MadePackage& package, const std::string& folder) {
    copyLanguages(package, folder);
    const std::string languages = ZPKPackageLayout::languageFolder(folder);
    FindingList found;
    LanguagesCheck(languages, found).run();
    TablesCheck(languages, found).run();
    LanguageNamesCheck(folder, found).run();
    takeOver(found, folder, package.nameOf(kResourceFolder));
}

/// What was found in the private folder, under the name of what was put there.
void PackageCheck::takeOver(FindingList& found, const std::string& folder, const std::string& shown) {
    for (const Finding& finding : found.findings()) {
        const std::string path = finding.path.substr(folder.size());
        m_findings.add(finding.rule->name, ZPKPath::join(shown, path), finding.text, finding.place);
    }
}

}  // namespace zpk_packager
