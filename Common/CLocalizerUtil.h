// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "Common/ILocalizer.h"

namespace varno_zpk {

/// Helpers over localizers.
class CLocalizerUtil {
public:
    CLocalizerUtil() = delete;

    /// Replaces the key in `ioText` by its text; a key without one stays. Returns `ioText`.
    static std::string& Localize(const ILocalizer* inLocalizer, std::string& ioText);
};

/// The default localizer's text of the key in the current language. A copy: the localizer's own text
/// lives only until the next one is asked for. Main thread only.
std::string localized(const char* inKey);

}  // namespace varno_zpk
