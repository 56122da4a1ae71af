// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/PreviewStage.h"

#include <algorithm>
#include <memory>
#include <optional>

#include "Base/ZPKPath.h"
#include "Base/ZPKRegularFile.h"
#include "Description/CLanguagesType.h"
#include "Description/CZPKXMLLoader.h"
#include "Package/ZPKPackageLayout.h"
#include "Platform/ZPKFileManager.h"
#include "Tools/zpkpack/InfoPlist.h"
#include "Tools/zpkpack/MadePackage.h"
#include "Tools/zpkpack/PackageCheck.h"
#include "Tools/zpkpack/PackageExtractor.h"
#include "Tools/zpkpack/PackageIcon.h"
#include "Tools/zpkpack/PackagerFailure.h"
#include "Tools/zpkpack/PreviewPictures.h"
#include "Tools/zpkpack/SourceWriter.h"

using namespace varno_zpk;

namespace zpk_packager {

namespace {

using Content = ZPKPackageLayout::Content;

constexpr const char* kResourceFolder = "Contents/Resources";
constexpr const char* kInfoPlist = "Contents/Info.plist";
constexpr const char* kNameStrings = "Contents/Resources/InfoPlist.strings";
constexpr const char* kForms[] = {"MainMenu.ui", "ProgressWindow.ui", "CDSearchWindow.ui"};
constexpr std::size_t kLargestFile = std::size_t{1} << 20;
constexpr unsigned int kFileMode = 0644;

/// What a launcher shows where a package has no list of languages.
constexpr const char* kBasicLanguage = "en";

bool isPlainName(const std::string& code) {
    return !code.empty() && std::all_of(code.begin(), code.end(), [](char character) {
        return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
               (character >= '0' && character <= '9') || character == '_' || character == '-';
    });
}

void copyFile(const std::string& from, const std::string& to) {
    const std::optional<std::string> bytes = ZPKRegularFile::contents(from, kLargestFile);
    if (!bytes) {
        throw PackagerFailure::ofSystem(from, errno);
    }
    SourceWriter::writeFile(to, *bytes, kFileMode);
}

}  // namespace

PreviewStage::PreviewStage(const PreviewOptions& options, const std::string& workFolder)
    : m_path(ZPKPath::join(workFolder, "stage")) {
    for (const char* const folder : {"", "Contents", kResourceFolder}) {
        SourceWriter::makeFolder(ZPKPath::join(m_path, folder));
    }
    if (PackageCheck::isMeant(options.package)) {
        fillFromPackage(options.package, workFolder);
    } else {
        fillFromSource(options);
    }
}

void PreviewStage::fillFromSource(const PreviewOptions& options) const {
    const std::string& source = options.package;
    InfoPlist::write(PackageDescription::read(source), ZPKPath::join(m_path, kInfoPlist));
    const std::string resources = ZPKPath::join(options.templatePath, kResourceFolder);
    for (const char* const form : kForms) {
        copyFile(ZPKPath::join(resources, form), ZPKPath::join(ZPKPath::join(m_path, kResourceFolder), form));
    }
    const std::string own = ZPKPackageLayout::languageFolder(source);
    const std::string languages =
        ZPKFileManager::isFolder(own) ? own : ZPKPackageLayout::languageFolder(resources);
    require(
        ZPKFileManager::copyItem(ZPKPath::resolved(languages),
                                 ZPKPackageLayout::languageFolder(ZPKPath::join(m_path, kResourceFolder))));
    const PackageIcon icon(source, options.drawProgramPath);
    icon.check();
    icon.putInto(ZPKPath::join(m_path, kResourceFolder));
    const std::string condition = ZPKPackageLayout::conditionDescription(source);
    if (ZPKFileManager::fileExists(condition)) {
        SourceWriter::makeFolder(ZPKPackageLayout::folder(m_path, Content::Info));
        copyFile(condition, ZPKPackageLayout::conditionDescription(m_path));
    }
}

void PreviewStage::fillFromPackage(const std::string& package, const std::string& workFolder) const {
    const std::unique_ptr<MadePackage> made = MadePackage::open(package);
    std::vector<std::string> files{kInfoPlist};
    for (const char* const form : kForms) {
        files.push_back(ZPKPath::join(kResourceFolder, form));
        if (made->find(files.back()) == nullptr) {
            throw PackagerFailure(package, "it carries no windows, so that there is nothing to show");
        }
    }
    if (made->find(kNameStrings) != nullptr) {
        files.emplace_back(kNameStrings);
    }
    for (const std::string& file : files) {
        SourceWriter::writeFile(ZPKPath::join(m_path, file), made->contents(file, kLargestFile), kFileMode);
    }
    const PackageExtractor extractor(*made, workFolder);
    extractor.extractLanguages(ZPKPath::join(m_path, kResourceFolder));
    extractor.extractIcon(ZPKPath::join(m_path, kResourceFolder));
    extractor.extractArchive(Content::Info, m_path);
}

std::vector<std::string> PreviewStage::languages() const {
    const std::unique_ptr<const CLanguagesType> list = CZPKXMLLoader::LoadLanguagesXML(
        ZPKPackageLayout::languageList(ZPKPath::join(m_path, kResourceFolder)));
    if (!list) {
        return {kBasicLanguage};
    }
    std::vector<std::string> codes;
    for (const auto& language : list->languages) {
        const std::string& code = language->code;
        if (isPlainName(code) && std::find(codes.begin(), codes.end(), code) == codes.end()) {
            codes.push_back(code);
        }
    }
    return codes;
}

}  // namespace zpk_packager
