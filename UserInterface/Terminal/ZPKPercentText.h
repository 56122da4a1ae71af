// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

/// A percentage as a language writes it.
class ZPKPercentText {
public:
    ZPKPercentText() = delete;

    /// `language` is a code as in the list of languages, such as `fr` or `pt_BR`; the sign follows the
    /// number directly in one that is not known.
    static std::string of(int percent, const std::string& language);
};
