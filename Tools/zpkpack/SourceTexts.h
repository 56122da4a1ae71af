// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <vector>

#include "Tools/zpkpack/Check/FindingList.h"
#include "Tools/zpkpack/Check/FolderTables.h"

namespace zpk_packager {

/// The texts that a package source brings, language by language.
class SourceTexts {
public:
    struct Language {
        std::string code;
        /// Its folder and the tables in it.
        std::string folder;
        FolderTables tables;
    };

    /// Reads every table of the source at `sourceFolder`; what is wrong with them is added to `findings`.
    /// Throws `PackagerFailure` where the source brings no language.
    SourceTexts(const std::string& sourceFolder, FindingList& findings);

    /// The folder of the languages.
    const std::string& folder() const { return m_folder; }

    /// Sorted by code.
    const std::vector<Language>& languages() const { return m_languages; }

    /// Null when there is no folder of this code.
    const Language* find(const std::string& code) const;

    /// The one that the others are translations of: English, without it the fall-back language, and without
    /// that the first.
    const Language& reference() const;

    /// Where the launcher finds the key in this language, be it in the tables that serve all of them.
    FolderTables::Found find(const Language& language, const std::string& key) const;

    /// The text that is to be translated: the reference language's, or the key, which is shown without one.
    std::string original(const std::string& key) const;

private:
    std::string m_folder;
    std::string m_fallBackCode;
    FolderTables m_common;
    std::vector<Language> m_languages;
};

}  // namespace zpk_packager
