// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace zpk_packager {

/// A text and its translation, in a PO file.
struct POMessage {
    /// The key of the text.
    std::string context;
    std::string id;
    /// Empty where there is no translation yet.
    std::string text;
    /// Somebody has to look at the translation before it counts.
    bool isFuzzy = false;
    bool isFormat = false;
    /// For the translator; any number of lines.
    std::string comment;
    /// Where it begins, in a file that was read.
    std::size_t line = 0;
};

/// The texts of one language in the form that translators' programs read and write: a PO file of GNU
/// gettext, in UTF-8, without plural forms.
struct POFile {
    std::string language;
    std::vector<POMessage> messages;
    /// Of a file that was read.
    std::size_t lines = 0;

    /// Reads the file at `path`. Strict: what this class has no place for is refused, not passed over.
    /// Throws `PackagerFailure` with path and line.
    static POFile read(const std::string& path);

    /// The bytes of the file.
    std::string bytes() const;
};

}  // namespace zpk_packager
