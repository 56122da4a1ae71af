// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <vector>

#include "Tools/zpkpack/Check/DescriptionText.h"
#include "Tools/zpkpack/Check/FindingList.h"

namespace zpk_packager {

/// Looks at `UILang/Languages.xml` and whether it and the language folders agree.
class LanguagesCheck {
public:
    /// `languageFolder` is the folder `UILang`.
    LanguagesCheck(std::string languageFolder, FindingList& findings)
        : m_folder(std::move(languageFolder)), m_findings(findings) {}

    void run();

    /// The names of the folders in the language folder, sorted.
    static std::vector<std::string> folders(const std::string& languageFolder);

private:
    struct Offer {
        std::string code;
        TextPlace place;
    };

    bool readOffers(DescriptionText& text);
    void checkOffers();
    void checkCode(const Offer& offer);
    void checkFolders();
    bool hasFolder(const std::string& code) const;
    void report(const char* check, const std::string& text, TextPlace place);

    std::string m_folder;
    FindingList& m_findings;
    std::string m_list;
    std::vector<Offer> m_offers;
    Offer m_fallBack;
    std::vector<std::string> m_folders;
};

}  // namespace zpk_packager
