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

}  // namespace varno_zpk
