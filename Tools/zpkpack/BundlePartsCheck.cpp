// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/BundlePartsCheck.h"

#include <array>
#include <exception>

#include "Platform/ZPKPropertyList.h"
#include "Tools/zpkpack/Check/PackageStrings.h"
#include "Tools/zpkpack/Check/SourceText.h"
#include "Tools/zpkpack/Starter.h"

namespace zpk_packager {

namespace {

constexpr const char* kInformation = "Contents/Info.plist";
constexpr const char* kModule = "Contents/PlugIns/ZPKDesktop.so";

enum class PartKind { File, Program, Form };

struct Part {
    const char* path;
    PartKind kind;
};

constexpr std::array<Part, 7> kParts = {{{kInformation, PartKind::File},
                                         {"Contents/Helpers/ditto", PartKind::Program},
                                         {"Contents/Resources/Info.datx", PartKind::File},
                                         {"Contents/Resources/Data.datx", PartKind::File},
                                         {"Contents/Resources/MainMenu.ui", PartKind::Form},
                                         {"Contents/Resources/ProgressWindow.ui", PartKind::Form},
                                         {"Contents/Resources/CDSearchWindow.ui", PartKind::Form}}};

}  // namespace

void BundlePartsCheck::run() {
    checkParts();
    checkNames();
}

void BundlePartsCheck::checkParts() {
    const bool hasWindows = m_package.find(kModule) != nullptr;
    for (const Part& part : kParts) {
        if (part.kind != PartKind::Form || hasWindows) {
            checkFile("bundle-part", part.path, part.kind == PartKind::Program);
        }
    }
}

void BundlePartsCheck::checkFile(const char* check, const std::string& path, bool isProgram) {
    const MadePackage::Item* const item = m_package.find(path);
    if (item == nullptr) {
        m_findings.add(check, m_package.nameOf(path), "it is missing");
    } else if (item->kind != MadePackage::Kind::File) {
        m_findings.add(check, m_package.nameOf(path), "it is no file");
    } else if (isProgram && (item->mode & 0111U) == 0) {
        m_findings.add(check, m_package.nameOf(path), "it may not be executed");
    }
}

void BundlePartsCheck::checkNames() {
    if (m_package.find(kInformation) == nullptr) {
        return;
    }
    const std::string path = m_package.nameOf(kInformation);
    try {
        const auto list =
            ZPKPropertyList::dictionaryWithBytes(m_package.contents(kInformation, SourceText::kLargestFile));
        if (!list) {
            m_findings.add("bundle-part", path, "it is no property list");
            return;
        }
        checkLauncher(list->stringForKey("CFBundleExecutable").value_or(""));
        checkFile("starter", Starter::path(list->stringForKey(PackageStrings::kNameKey).value_or("")), true);
        const std::string fault =
            PackageStrings::faultOfIdentifier(list->stringForKey(PackageStrings::kIdentifierKey).value_or(""),
                                              list->stringForKey(PackageStrings::kNameKey).value_or(""));
        if (!fault.empty()) {
            m_findings.add("identifier", path, fault);
        }
    } catch (const std::exception& failure) {
        const std::string message = failure.what();
        m_findings.add("bundle-part", path,
                       message.starts_with(path + ": ") ? message.substr(path.size() + 2) : message);
    }
}

void BundlePartsCheck::checkLauncher(const std::string& name) {
    if (name.empty()) {
        m_findings.add("bundle-part", m_package.nameOf(kInformation),
                       "it names no launcher: \"CFBundleExecutable\" is missing");
    } else {
        checkFile("bundle-part", "Contents/Linux/" + name, true);
    }
}

}  // namespace zpk_packager
