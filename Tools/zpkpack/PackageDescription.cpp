// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/PackageDescription.h"

#include <optional>

#include "Package/ZPKPackageLayout.h"
#include "Platform/ZPKFileManager.h"
#include "Tools/zpkpack/Check/PackageStrings.h"
#include "Tools/zpkpack/PackagerFailure.h"

namespace zpk_packager {

namespace {

std::string requiredString(const ZPKPropertyList& list, const std::string& key, const std::string& path) {
    std::string value = list.stringForKey(key).value_or("");
    if (const std::string fault = PackageStrings::faultOfValue(value); !fault.empty()) {
        throw PackagerFailure(path + ": \"" + key + "\" " + fault);
    }
    return value;
}

}  // namespace

PackageDescription PackageDescription::read(const std::string& folder) {
    const std::string path = ZPKPackageLayout::packageStrings(folder);
    if (!ZPKFileManager::fileExists(path)) {
        throw PackagerFailure(path + " is missing: it names the bundle and its identifier");
    }
    const ZPKResult<PackageStrings> strings = PackageStrings::read(path);
    std::size_t errorAt = 0;
    const std::optional<ZPKPropertyList> list = strings ? strings->entries(errorAt) : std::nullopt;
    if (!list) {
        throw PackagerFailure(path + " is not a list of \"key\" = \"value\"; entries");
    }
    PackageDescription description;
    description.bundleName = requiredString(*list, PackageStrings::kNameKey, path);
    description.bundleIdentifier = requiredString(*list, PackageStrings::kIdentifierKey, path);
    if (const std::string fault =
            PackageStrings::faultOfIdentifier(description.bundleIdentifier, description.bundleName);
        !fault.empty()) {
        throw PackagerFailure(path + ": " + fault);
    }
    description.displayName = list->stringForKey(PackageStrings::kTitleKey).value_or("");
    if (const std::string fault = PackageStrings::faultOfTitle(description.displayName); !fault.empty()) {
        throw PackagerFailure(path + ": \"" + PackageStrings::kTitleKey + "\" " + fault);
    }
    return description;
}

}  // namespace zpk_packager
