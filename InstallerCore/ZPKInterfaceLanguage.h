// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

class ZPKLanguageInfos;

/// The language that the interface's texts come in. Main thread only.
class ZPKInterfaceLanguage {
public:
    ZPKInterfaceLanguage() = delete;

    /// Makes the resource folder's language folder a source of texts, the first of `preferred` the
    /// current language, and the one that the language list falls back on the alternative one; where
    /// there is no such language, or no list, "en" or whatever was set before stays. Gives the code of
    /// the language that the texts will come in.
    static std::string setUp(const std::string& resourceFolder, const ZPKLanguageInfos& preferred);
};
