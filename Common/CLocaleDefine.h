// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

namespace varno_zpk {

/// The language codes that the program itself knows.
class CLocaleDefine {
public:
    CLocaleDefine() = delete;

    static const char* const LANGUAGE_ENGLISH;
    /// What the current and the alternative language are at start.
    static const char* const BASIC_LANGUAGE;
};

}  // namespace varno_zpk
