// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "Tools/zpkpack/SourceTexts.h"

namespace zpk_packager {

/// What each language of a source has and lacks. Plain text that a terminal obeys nothing in, ending in a
/// line feed.
class StringsReport {
public:
    StringsReport() = delete;

    /// A line of numbers for each language, then a line for each key that is worth a look.
    static std::string asText(const SourceTexts& texts);

    /// An object with the code of the `reference` language and the array `languages` (`code`; the keys that
    /// are `present`, `missing`, `unused` and `sameAsReference`; the number of `placeholders`).
    static std::string asJSON(const SourceTexts& texts);
};

}  // namespace zpk_packager
