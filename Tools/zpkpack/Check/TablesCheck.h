// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "Tools/zpkpack/Check/FindingList.h"
#include "Tools/zpkpack/Check/FolderTables.h"

namespace zpk_packager {

/// Looks at the string tables of a package: each by itself, and what the texts of a language say together.
class TablesCheck {
public:
    TablesCheck(std::string languageFolder, FindingList& findings)
        : m_folder(std::move(languageFolder)), m_findings(findings) {}

    void run();

private:
    void checkLanguage(const std::string& folder, const FolderTables& common);
    void checkTexts(const FolderTables& tables, const FolderTables& common);
    void checkPlaceholder(const FolderTables& tables);
    void checkButton(const FolderTables& tables);

    std::string m_folder;
    FindingList& m_findings;
};

}  // namespace zpk_packager
