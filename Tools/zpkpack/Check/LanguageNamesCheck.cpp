// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/Check/LanguageNamesCheck.h"

#include <algorithm>
#include <optional>

#include "Base/ZPKUnicode.h"
#include "Package/ZPKPackageLayout.h"
#include "Tools/zpkpack/Check/CheckedFile.h"
#include "Tools/zpkpack/Check/LanguagesCheck.h"
#include "Tools/zpkpack/Check/PackageStrings.h"

namespace zpk_packager {

namespace {

constexpr const char* kTitleKey = PackageStrings::kTitleKey;

std::string quoted(const std::string& text) {
    return "\"" + text + "\"";
}

/// An XML or binary list does not tell where its keys are.
std::vector<ZPKPropertyList::KeyPlace> withoutPlaces(const ZPKPropertyList& names) {
    std::vector<ZPKPropertyList::KeyPlace> keys;
    for (const std::string& key : names.keys()) {
        keys.push_back({key, 0});
    }
    return keys;
}

}  // namespace

void LanguageNamesCheck::run() {
    for (const std::string& language : LanguagesCheck::folders(ZPKPackageLayout::languageFolder(m_folder))) {
        m_path = ZPKPackageLayout::languageNames(m_folder, language);
        if (const std::optional<std::string> bytes = CheckedFile::read(m_path, m_findings)) {
            checkBytes(*bytes);
        }
    }
}

void LanguageNamesCheck::checkBytes(const std::string& bytes) {
    const std::optional<std::string> decoded = ZPKUnicode::utf8FromMarkedText(bytes);
    const SourceText text(decoded.value_or(""));
    std::size_t errorAt = 0;
    KeyPlaces keys;
    std::optional<ZPKPropertyList> names =
        decoded ? ZPKPropertyList::dictionaryWithText(text.bytes(), errorAt, &keys) : std::nullopt;
    if (!names) {
        names = ZPKPropertyList::dictionaryWithBytes(bytes);
        keys = names ? withoutPlaces(*names) : KeyPlaces();
    }
    if (names) {
        checkKeys(keys, text);
        checkTitle(*names, keys, text);
    } else if (decoded) {
        m_findings.add("table-syntax", m_path, "\"key\" = \"value\"; is expected from here on",
                       text.placeOf(std::min(errorAt, text.bytes().size())));
    } else {
        m_findings.add("table-encoding", m_path, "the bytes from here on are no UTF-8",
                       SourceText(bytes).placeOf(ZPKUnicode::utf8Length(bytes)));
    }
}

void LanguageNamesCheck::checkKeys(const KeyPlaces& keys, const SourceText& text) {
    std::optional<std::size_t> line;
    for (const auto& [key, offset] : keys) {
        const TextPlace place = text.placeOf(offset);
        if (key != kTitleKey) {
            m_findings.add("key-unknown", m_path,
                           "nothing asks for the key " + quoted(key) + "; " + quoted(kTitleKey) +
                               " is what a language may say",
                           place);
        } else if (line) {
            m_findings.add("key-doubled", m_path,
                           quoted(key) + " is in line " + std::to_string(*line) + ", too", place);
        } else {
            line = place.line;
        }
    }
}

void LanguageNamesCheck::checkTitle(const ZPKPropertyList& names, const KeyPlaces& keys,
                                    const SourceText& text) {
    const auto last =
        std::find_if(keys.rbegin(), keys.rend(), [](const auto& each) { return each.key == kTitleKey; });
    if (last == keys.rend()) {
        return;
    }
    const std::optional<std::string> title = names.stringForKey(kTitleKey);
    std::string fault = "is no text";
    if (title) {
        fault = title->empty() ? "is empty" : PackageStrings::faultOfTitle(*title);
    }
    if (!fault.empty()) {
        m_findings.add("package-title", m_path, quoted(kTitleKey) + " " + fault, text.placeOf(last->offset));
    }
}

}  // namespace zpk_packager
