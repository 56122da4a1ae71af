// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <vector>

#include "Tools/zpkpack/Check/FindingList.h"
#include "Tools/zpkpack/Check/TableText.h"

namespace zpk_packager {

/// Looks at the string tables of a package: each by itself, and what the texts of a language say together.
class TablesCheck {
public:
    TablesCheck(std::string languageFolder, FindingList& findings)
        : m_folder(std::move(languageFolder)), m_findings(findings) {}

    void run();

private:
    using Tables = std::vector<TableText>;

    /// The tables of one folder in the order in which a key is looked for in them.
    Tables tablesIn(const std::string& folder);
    void checkLanguage(const std::string& folder, const Tables& common);
    void checkTexts(const Tables& tables, const Tables& common);
    void checkPlaceholder(const Tables& tables);
    void checkButton(const Tables& tables);

    std::string m_folder;
    FindingList& m_findings;
};

}  // namespace zpk_packager
