// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Platform/ZPKBundle.h"

#include <utility>

#include "Base/ZPKPath.h"
#include "Platform/ZPKFileManager.h"
#include "Platform/ZPKPropertyList.h"

namespace {

const std::string kContentsFolder = "/Contents/";
const std::string kInformationFile = "/Contents/Info.plist";
constexpr const char* kNameKey = "CFBundleName";
const std::string kBundleExtension = ".app";

bool isPlainFileName(const std::string& name) {
    return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos &&
           name.find('\0') == std::string::npos;
}

}  // namespace

std::optional<ZPKBundle> ZPKBundle::bundleWithPath(const std::string& path) {
    const std::string folder = ZPKPath::withoutTrailingSeparators(path);
    if (folder.empty() || !ZPKFileManager::isRegularFile(folder + kInformationFile)) {
        return std::nullopt;
    }
    return ZPKBundle(folder);
}

std::optional<ZPKBundle> ZPKBundle::bundleOfProgram(const std::string& path) {
    std::size_t at = path.rfind(kContentsFolder);
    while (at != std::string::npos && at != 0) {
        const bool isHelper = path.compare(at + kContentsFolder.size(), 8, "Helpers/") == 0;
        if (std::optional<ZPKBundle> bundle = bundleWithPath(path.substr(0, at))) {
            return isHelper ? std::nullopt : bundle;
        }
        at = path.rfind(kContentsFolder, at - 1);
    }
    return std::nullopt;
}

std::string ZPKBundle::resourcePath() const {
    return m_path + "/Contents/Resources";
}

std::string ZPKBundle::helperPath(const std::string& name) const {
    return m_path + "/Contents/Helpers/" + name;
}

std::string ZPKBundle::frameworksPath() const {
    return m_path + "/Contents/Frameworks";
}

std::string ZPKBundle::plugInPath(const std::string& name) const {
    return m_path + "/Contents/PlugIns/" + name;
}

std::optional<std::string> ZPKBundle::executablePath() const {
    const std::string name = infoString("CFBundleExecutable");
    if (!isPlainFileName(name)) {
        return std::nullopt;
    }
    const std::string path = m_path + "/Contents/Linux/" + name;
    return ZPKFileManager::isExecutableRegularFile(path) ? std::optional(path) : std::nullopt;
}

std::string ZPKBundle::bundleIdentifier() const {
    return infoString("CFBundleIdentifier");
}

std::optional<std::string> ZPKBundle::nameInStrings() const {
    const auto strings = ZPKPropertyList::dictionaryWithContentsOfFile(resourcePath() + "/InfoPlist.strings");
    return strings ? strings->stringForKey(kNameKey) : std::nullopt;
}

std::string ZPKBundle::localizedName() const {
    if (std::optional<std::string> name = nameInStrings()) {
        return *name;
    }
    const auto information = ZPKPropertyList::dictionaryWithContentsOfFile(m_path + kInformationFile);
    if (information) {
        if (std::optional<std::string> name = information->stringForKey(kNameKey)) {
            return *name;
        }
    }
    const std::string folder = ZPKPath::lastComponent(m_path);
    return folder.ends_with(kBundleExtension) ? folder.substr(0, folder.size() - kBundleExtension.size())
                                              : folder;
}

std::optional<std::string> ZPKBundle::displayName() const {
    std::string name = infoString(kDisplayNameKey);
    return name.empty() ? std::nullopt : std::optional(std::move(name));
}

std::string ZPKBundle::infoString(const std::string& key) const {
    const auto information = ZPKPropertyList::dictionaryWithContentsOfFile(m_path + kInformationFile);
    return information ? information->stringForKey(key).value_or("") : "";
}
