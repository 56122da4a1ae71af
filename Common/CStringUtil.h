// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

namespace varno_zpk {

/// Helpers over byte strings.
class CStringUtil {
public:
    CStringUtil() = delete;

    /// Assigns the zero-terminated text to `out`, byte for byte.
    static void SetUTF8StringToUstring(const char* str, std::string& out);
};

}  // namespace varno_zpk
