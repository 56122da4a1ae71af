// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Package/ZPKPackageLayout.h"

#include "Base/ZPKPath.h"

namespace {

constexpr const char* kPlainSuffix = ".dat";
constexpr const char* kScrambledSuffix = ".datx";

}  // namespace

const char* ZPKPackageLayout::name(Content content) {
    return content == Content::Info ? "Info" : "Data";
}

std::string ZPKPackageLayout::folder(const std::string& parent, Content content) {
    return ZPKPath::join(parent, name(content));
}

std::string ZPKPackageLayout::plainArchive(const std::string& parent, Content content) {
    return folder(parent, content) + kPlainSuffix;
}

std::string ZPKPackageLayout::scrambledArchive(const std::string& resourceFolder, Content content) {
    return folder(resourceFolder, content) + kScrambledSuffix;
}

std::string ZPKPackageLayout::conditionDescription(const std::string& parent) {
    return ZPKPath::join(folder(parent, Content::Info), "Condition.xml");
}

std::string ZPKPackageLayout::startupDescription(const std::string& parent) {
    return ZPKPath::join(folder(parent, Content::Info), "Startup.xml");
}

std::string ZPKPackageLayout::languageFolder(const std::string& parent) {
    return ZPKPath::join(parent, kLanguageFolderName);
}

std::string ZPKPackageLayout::languageList(const std::string& parent) {
    return ZPKPath::join(languageFolder(parent), "Languages.xml");
}

std::string ZPKPackageLayout::languageNames(const std::string& parent, const std::string& language) {
    return ZPKPath::join(ZPKPath::join(languageFolder(parent), language), "InfoPlist.strings");
}

std::string ZPKPackageLayout::icon(const std::string& parent) {
    return ZPKPath::join(parent, "Icon.png");
}

std::string ZPKPackageLayout::drawing(const std::string& sourceFolder) {
    return ZPKPath::join(sourceFolder, "Icon.svg");
}

std::string ZPKPackageLayout::packageStrings(const std::string& sourceFolder) {
    return ZPKPath::join(sourceFolder, "Package.strings");
}

std::string ZPKPackageLayout::stagingFolder(const std::string& temporaryFolder) {
    return ZPKPath::join(temporaryFolder, "VarnoZPK_TEMP");
}
