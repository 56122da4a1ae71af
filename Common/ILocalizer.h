// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

namespace varno_zpk {

/// Gives the texts shown to the user by their keys. Main thread only.
///
/// A text is temporary storage, shared by all texts: it is valid until the next one is asked for,
/// so it has to be copied at once. A key without a text stands for itself. The order of the
/// operations is part of the interface.
class ILocalizer {
public:
    virtual ~ILocalizer() = default;

    /// The text of the key in the current language.
    virtual const char* Localize(const char* inKey) const = 0;

    /// The text of the key in the language; `inKey` itself, neither looked up nor expanded, when
    /// `inLanguage` is null or empty.
    virtual const char* Localize(const char* inKey, const char* inLanguage) = 0;

    virtual const char* GetDefaultLocalizeLanguage() const = 0;
    virtual unsigned long GetLocalizeLanguageCount() const = 0;
    virtual const char* GetLocalizeLanguageAt(unsigned long inIndex) const = 0;
};

}  // namespace varno_zpk
