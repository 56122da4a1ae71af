// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "Tools/zpkpack/POFile.h"
#include "Tools/zpkpack/SourceTexts.h"

namespace zpk_packager {

/// Gives the texts of a source to translators, as PO files.
class TextExport {
public:
    explicit TextExport(const SourceTexts& texts) : m_texts(texts) {}

    /// Writes the file `CODE.po` of every language into the new folder at `folder`. Throws
    /// `PackagerFailure`.
    void writeTo(const std::string& folder) const;

private:
    POFile fileOf(const SourceTexts::Language& language) const;
    POMessage messageOf(const SourceTexts::Language& language, const std::string& key) const;

    const SourceTexts& m_texts;
};

}  // namespace zpk_packager
