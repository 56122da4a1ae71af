// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/Check/PackageStringsCheck.h"

#include <algorithm>
#include <optional>
#include <sstream>

#include "Package/ZPKPackageLayout.h"
#include "Tools/zpkpack/Check/CheckedFile.h"

namespace zpk_packager {

namespace {

constexpr const char* kInstruction = "zpkpack:";
constexpr const char* kAllow = "allow";

TextPlace placeOf(const char* key, const PackageStrings& strings, const SourceText& text) {
    const std::size_t offset = strings.offsetOfKey(key);
    return offset == text.bytes().size() ? TextPlace{} : text.placeOf(offset);
}

}  // namespace

void PackageStringsCheck::run(const std::string& folder) {
    m_path = ZPKPackageLayout::packageStrings(folder);
    if (!CheckedFile::isThere(m_path)) {
        m_findings.add("missing-part", m_path, "it is missing; it names the bundle and its identifier");
        return;
    }
    const ZPKResult<PackageStrings> strings = PackageStrings::read(m_path);
    if (!strings) {
        m_findings.add("package-strings", m_path, strings.failure().reason());
        return;
    }
    const SourceText text(strings->text());
    takeAllowances(*strings, text);
    checkEntries(*strings, text);
}

void PackageStringsCheck::takeAllowances(const PackageStrings& strings, const SourceText& text) {
    for (const PackageStrings::Comment& comment : strings.comments()) {
        std::istringstream words(comment.text);
        std::string word;
        if (!(words >> word) || word != kInstruction) {
            continue;
        }
        const TextPlace place = text.placeOf(comment.offset);
        if (!(words >> word) || word != kAllow) {
            m_findings.add("allow-unused", m_path, "\"zpkpack: allow CHECK\" is all that can be said here",
                           place);
            continue;
        }
        while (words >> word) {
            m_findings.allow(word, m_path, place);
        }
    }
}

void PackageStringsCheck::checkEntries(const PackageStrings& strings, const SourceText& text) {
    std::size_t errorAt = 0;
    const std::optional<ZPKPropertyList> entries = strings.entries(errorAt);
    if (!entries) {
        m_findings.add("package-strings", m_path, "\"key\" = \"value\"; is expected from here on",
                       text.placeOf(std::min(errorAt, text.bytes().size())));
        return;
    }
    checkNames(*entries, strings, text);
}

void PackageStringsCheck::checkNames(const ZPKPropertyList& entries, const PackageStrings& strings,
                                     const SourceText& text) {
    for (const char* const key : {PackageStrings::kNameKey, PackageStrings::kIdentifierKey}) {
        const std::string fault = PackageStrings::faultOfValue(entries.stringForKey(key).value_or(""));
        if (!fault.empty()) {
            m_findings.add("package-strings", m_path, std::string("\"") + key + "\" " + fault,
                           placeOf(key, strings, text));
            return;
        }
    }
    const std::string fault =
        PackageStrings::faultOfIdentifier(*entries.stringForKey(PackageStrings::kIdentifierKey),
                                          *entries.stringForKey(PackageStrings::kNameKey));
    const std::string title = entries.stringForKey(PackageStrings::kTitleKey).value_or("");
    if (const std::string faultOfTitle = PackageStrings::faultOfTitle(title); !faultOfTitle.empty()) {
        m_findings.add("package-title", m_path,
                       std::string("\"") + PackageStrings::kTitleKey + "\" " + faultOfTitle,
                       placeOf(PackageStrings::kTitleKey, strings, text));
    }
    if (!fault.empty()) {
        m_findings.add("identifier", m_path, fault, placeOf(PackageStrings::kIdentifierKey, strings, text));
    }
}

}  // namespace zpk_packager
