// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

/// The languages that the package offers and the person prefers, in the person's order. Computed
/// once; main thread only.
class ZPKLanguageInfos {
public:
    /// A chosen language: its one key is "Code".
    using PropertyList = std::map<std::string, std::string>;

    /// The one instance, made on the first call and never released.
    static const ZPKLanguageInfos& infos();

    ZPKLanguageInfos();

    std::uint32_t languageCount() const;

    /// Code of the language at `index`; throws `std::out_of_range` past the last one.
    const std::string& languageAt(std::uint32_t index) const;

    /// The first entry with that code, or null.
    const PropertyList* propertyListWithLanguage(const std::string& code) const;

    /// The codes of "UILang/Languages.xml" that the person prefers. Empty when the list cannot be
    /// loaded.
    static std::vector<std::string> preferredLocalizationsFromLanguagesXML();

    /// The elements of `offered` that `preferred` holds, in the order of `preferred`; codes are
    /// compared as they stand, after the host's "zh-Hans" was taken for the packages' "zh_CN". A
    /// code that is offered twice comes twice.
    static std::vector<std::string> preferredLocalizations(std::vector<std::string> offered,
                                                           std::vector<std::string> preferred);

private:
    std::vector<PropertyList> _infos;
};
