// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

namespace varno_zpk {

/// Matches a whole text against a pattern: "*" stands for any bytes or none, "?" for exactly one,
/// every other byte for itself. There is no escape. May be used from any thread.
class WildCard {
public:
    WildCard() = delete;

    /// Takes time proportional to the product of the two lengths at most, however many stars the
    /// pattern has.
    static bool AMatch(const char* pattern, const char* text);

    /// `AMatch` on the two texts, each up to its first zero byte.
    static bool Match(const std::string& pattern, const std::string& text);
};

}  // namespace varno_zpk
