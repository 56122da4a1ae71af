// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Package/ZPKPackageTitle.h"

#include "Package/ZPKPackageLayout.h"
#include "Platform/ZPKPropertyList.h"

std::optional<std::string> ZPKPackageTitle::find(const ZPKBundle& bundle, const std::string& language) {
    const auto names = ZPKPropertyList::dictionaryWithContentsOfFile(
        ZPKPackageLayout::languageNames(bundle.resourcePath(), language));
    if (names) {
        std::optional<std::string> name = names->stringForKey(ZPKBundle::kDisplayNameKey);
        if (name && !name->empty()) {
            return name;
        }
    }
    return bundle.displayName();
}

std::string ZPKPackageTitle::inLanguage(const ZPKBundle& bundle, const std::string& language) {
    return find(bundle, language).value_or(bundle.localizedName());
}
