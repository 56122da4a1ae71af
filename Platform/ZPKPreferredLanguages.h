// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <vector>

/// The languages that the person has asked for. Read from the environment at each call; main thread
/// only.
class ZPKPreferredLanguages {
public:
    ZPKPreferredLanguages() = delete;

    /// The person's preferred languages, most preferred first, from `LANGUAGE` (a colon list), else
    /// the first set of `LC_ALL`, `LC_MESSAGES`, `LANG`. `LANGUAGE` counts only where the locale is
    /// not `C` or `POSIX`. Each `ll_CC.codeset@modifier` gives `ll_CC`, then `ll`; `zh_CN`, `zh_SG`
    /// and a bare `zh` also give `zh-Hans`; `C` and `POSIX` give nothing, and in a list nothing after
    /// them counts. Without repetitions.
    static std::vector<std::string> current();
};
