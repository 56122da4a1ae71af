// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

/// Numbers as a language writes them.
class ZPKPercentText {
public:
    ZPKPercentText() = delete;

    /// The percentage. `language` is a code as in the list of languages, such as `fr` or `pt_BR`; the sign
    /// follows the number directly in one that is not known.
    static std::string of(int percent, const std::string& language);

    /// `text` with the language's digits in the place of the European ones.
    static std::string digits(const std::string& text, const std::string& language);
};
