// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/PackageDescription.h"

#include <optional>

#include "Base/ZPKPath.h"
#include "Package/ZPKPackageLayout.h"
#include "Platform/ZPKFileManager.h"
#include "Platform/ZPKPropertyList.h"
#include "Tools/zpkpack/PackagerFailure.h"

namespace zpk_packager {

namespace {

std::string requiredString(const ZPKPropertyList& list, const std::string& key, const std::string& path) {
    std::string value = list.stringForKey(key).value_or("");
    if (value.empty()) {
        throw PackagerFailure(path + ": \"" + key + "\" is missing");
    }
    for (const char character : value) {
        if (static_cast<unsigned char>(character) < 0x20 || character == '/') {
            throw PackagerFailure(path + ": \"" + key + "\" holds a character that no name may hold");
        }
    }
    return value;
}

}  // namespace

PackageDescription PackageDescription::read(const std::string& folder) {
    const std::string path = ZPKPackageLayout::packageStrings(folder);
    if (!ZPKFileManager::fileExists(path)) {
        throw PackagerFailure(path + " is missing: it names the bundle and its identifier");
    }
    const std::optional<ZPKPropertyList> list = ZPKPropertyList::dictionaryWithContentsOfFile(path);
    if (!list) {
        throw PackagerFailure(path + " is not a list of \"key\" = \"value\"; entries");
    }
    PackageDescription description;
    description.bundleName = requiredString(*list, "CFBundleName", path);
    description.bundleIdentifier = requiredString(*list, "CFBundleIdentifier", path);
    if (ZPKPath::extension(description.bundleIdentifier) != description.bundleName) {
        throw PackagerFailure(path + ": the last part of the identifier \"" + description.bundleIdentifier +
                              "\" must be the bundle name \"" + description.bundleName + "\"");
    }
    return description;
}

}  // namespace zpk_packager
