// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <vector>

#include "Platform/ZPKPropertyList.h"
#include "Tools/zpkpack/Check/FindingList.h"
#include "Tools/zpkpack/Check/SourceText.h"

namespace zpk_packager {

/// Looks at what a package is called in its languages.
class LanguageNamesCheck {
public:
    /// `folder` is the package source.
    LanguageNamesCheck(std::string folder, FindingList& findings)
        : m_folder(std::move(folder)), m_findings(findings) {}

    void run();

private:
    using KeyPlaces = std::vector<ZPKPropertyList::KeyPlace>;

    void checkBytes(const std::string& bytes);
    void checkKeys(const KeyPlaces& keys, const SourceText& text);
    void checkTitle(const ZPKPropertyList& names, const KeyPlaces& keys, const SourceText& text);

    std::string m_folder;
    FindingList& m_findings;
    /// The file that is looked at.
    std::string m_path;
};

}  // namespace zpk_packager
