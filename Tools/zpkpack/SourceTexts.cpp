// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/SourceTexts.h"

#include <algorithm>
#include <memory>

#include "Base/ZPKPath.h"
#include "Common/CLocaleDefine.h"
#include "Description/CLanguagesType.h"
#include "Description/CZPKXMLLoader.h"
#include "Package/ZPKPackageLayout.h"
#include "Platform/ZPKFileManager.h"
#include "Tools/zpkpack/Check/LanguagesCheck.h"
#include "Tools/zpkpack/PackagerFailure.h"

using namespace varno_zpk;

namespace zpk_packager {

SourceTexts::SourceTexts(const std::string& sourceFolder, FindingList& findings)
    : m_folder(ZPKPackageLayout::languageFolder(sourceFolder)), m_common(m_folder, findings) {
    for (const std::string& code : LanguagesCheck::folders(m_folder)) {
        const std::string folder = ZPKPath::join(m_folder, code);
        m_languages.push_back({code, folder, FolderTables(folder, findings)});
    }
    if (m_languages.empty()) {
        throw PackagerFailure(m_folder, ZPKFileManager::isFolder(m_folder)
                                            ? "there is no folder of a language in it"
                                            : "the package has no texts of its own, so it speaks the "
                                              "launcher's languages");
    }
    if (const auto list = CZPKXMLLoader::LoadLanguagesXML(ZPKPackageLayout::languageList(sourceFolder))) {
        m_fallBackCode = list->fallBackCode;
    }
}

const SourceTexts::Language* SourceTexts::find(const std::string& code) const {
    const auto found = std::find_if(m_languages.begin(), m_languages.end(),
                                    [&](const Language& language) { return language.code == code; });
    return found == m_languages.end() ? nullptr : &*found;
}

const SourceTexts::Language& SourceTexts::reference() const {
    for (const std::string& code : {std::string(CLocaleDefine::LANGUAGE_ENGLISH), m_fallBackCode}) {
        if (const Language* const language = find(code)) {
            return *language;
        }
    }
    return m_languages.front();
}

FolderTables::Found SourceTexts::find(const Language& language, const std::string& key) const {
    const FolderTables::Found own = language.tables.find(key);
    return own.entry != nullptr ? own : m_common.find(key);
}

std::string SourceTexts::original(const std::string& key) const {
    const FolderTables::Found found = find(reference(), key);
    return found.entry == nullptr ? key : found.entry->text;
}

}  // namespace zpk_packager
