// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/Check/LanguagesCheck.h"

#include <algorithm>
#include <map>
#include <memory>
#include <set>

#include "Base/ZPKPath.h"
#include "Common/CZPKError.h"
#include "Description/CElementReader.h"
#include "Description/CLanguagesType.h"
#include "Description/ZPKXMLDefine.h"
#include "Package/ZPKPackageLayout.h"
#include "Platform/ZPKFileManager.h"
#include "Tools/zpkpack/Check/CheckedFile.h"
#include "Tools/zpkpack/Check/KnownNames.h"

using namespace varno_zpk;

namespace zpk_packager {

namespace {

bool isEach(std::string_view text, char first, char last) {
    return std::all_of(text.begin(), text.end(), [=](char each) { return each >= first && each <= last; });
}

/// What settings ask for: a language of two or three letters, and a country or a region's number.
bool canBeAskedFor(const std::string& code) {
    const std::size_t separator = std::min(code.find('_'), code.size());
    const std::string_view language = std::string_view(code).substr(0, separator);
    const std::string_view country = std::string_view(code).substr(separator);
    const bool isLanguage = (language.size() == 2 || language.size() == 3) && isEach(language, 'a', 'z');
    const bool isCountry = (country.size() == 3 && isEach(country.substr(1), 'A', 'Z')) ||
                           (country.size() == 4 && isEach(country.substr(1), '0', '9'));
    return isLanguage && (country.empty() || isCountry);
}

/// A code that is asked for where only capitals or the sign before the country are others; empty elsewhere.
std::string codeMeantBy(std::string code) {
    const std::size_t separator = std::min(code.find_first_of("-_"), code.size());
    for (std::size_t at = 0; at < code.size(); ++at) {
        char& each = code[at];
        if (at == separator) {
            each = '_';
        } else if (at < separator && each >= 'A' && each <= 'Z') {
            each = static_cast<char>(each - 'A' + 'a');
        } else if (at > separator && each >= 'a' && each <= 'z') {
            each = static_cast<char>(each - 'a' + 'A');
        }
    }
    return canBeAskedFor(code) ? code : "";
}

bool launcherTakes(const CXMLElement& root) {
    try {
        return !CLanguagesType(root).languages.empty();
    } catch (const CZPKError&) {
        return false;
    }
}

}  // namespace

void LanguagesCheck::run() {
    m_list = ZPKPath::join(m_folder, "Languages.xml");
    m_folders = folders(m_folder);
    if (!CheckedFile::isThere(m_list)) {
        report("languages", "there is no list of the languages that are offered", {});
        return;
    }
    const std::unique_ptr<DescriptionText> text = DescriptionText::read(m_list, m_findings);
    if (text && readOffers(*text)) {
        checkOffers();
        checkFolders();
    }
}

std::vector<std::string> LanguagesCheck::folders(const std::string& languageFolder) {
    std::vector<std::string> names;
    ZPKFileManager::contentsOfFolder(languageFolder, names).ignore();
    std::erase_if(names, [&](const std::string& name) {
        return !ZPKFileManager::isFolder(ZPKPath::join(languageFolder, name));
    });
    std::sort(names.begin(), names.end());
    return names;
}

bool LanguagesCheck::readOffers(DescriptionText& text) {
    const KnownNames names({ATTR_FALLBACKCODE}, {TAG_LANGUAGE});
    names.check(text, text.root(), m_findings, [&](const CXMLElement& language) {
        KnownNames({ATTR_CODE}, {}).check(text, language, m_findings);
        Offer offer{{}, text.placeOf(language)};
        if (!CElementReader::ReadAttribute(language, ATTR_CODE, offer.code)) {
            report("languages", "this element has no Code, so the launcher cannot use the list", offer.place);
        }
        m_offers.push_back(std::move(offer));
    });
    const bool hasFallBack = CElementReader::ReadAttribute(text.root(), ATTR_FALLBACKCODE, m_fallBack.code);
    m_fallBack.place = text.placeOf(text.root(), ATTR_FALLBACKCODE);
    if (!hasFallBack) {
        report("languages", "the root has no FallBackCode, so the launcher cannot use the list",
               m_fallBack.place);
    } else if (m_offers.empty()) {
        report("languages", "it offers no language, so the launcher cannot use the list",
               text.placeOf(text.root()));
    }
    return launcherTakes(text.root());
}

void LanguagesCheck::checkOffers() {
    std::map<std::string, std::size_t> lines;
    for (const Offer& offer : m_offers) {
        const auto [before, isNew] = lines.try_emplace(offer.code, offer.place.line);
        if (!isNew) {
            report("language-doubled",
                   "\"" + offer.code + "\" is listed in line " + std::to_string(before->second) + ", too",
                   offer.place);
            continue;
        }
        checkCode(offer);
    }
    if (!hasFolder(m_fallBack.code)) {
        report("fallback-without-folder", "there is no folder \"" + m_fallBack.code + "\"", m_fallBack.place);
    }
}

void LanguagesCheck::checkCode(const Offer& offer) {
    if (!canBeAskedFor(offer.code)) {
        const std::string meant = codeMeantBy(offer.code);
        report("language-never-asked",
               "no setting asks for \"" + offer.code + "\"" +
                   (meant.empty() ? "" : "; they ask for \"" + meant + "\""),
               offer.place);
    }
    if (!hasFolder(offer.code)) {
        report("language-without-folder", "there is no folder \"" + offer.code + "\"", offer.place);
    }
}

void LanguagesCheck::checkFolders() {
    std::set<std::string> named = {m_fallBack.code};
    for (const Offer& offer : m_offers) {
        named.insert(offer.code);
    }
    for (const std::string& folder : m_folders) {
        if (named.count(folder) == 0) {
            m_findings.add("language-not-offered", ZPKPath::join(m_folder, folder),
                           "Languages.xml does not offer \"" + folder + "\"");
        }
    }
}

bool LanguagesCheck::hasFolder(const std::string& code) const {
    return std::binary_search(m_folders.begin(), m_folders.end(), code);
}

void LanguagesCheck::report(const char* check, const std::string& text, TextPlace place) {
    m_findings.add(check, m_list, text, place);
}

}  // namespace zpk_packager
