// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Common/WildCard.h"

namespace varno_zpk {

// Only the last star passed is ever retried. Giving an earlier star more bytes could only make the
// later one begin further right in the text, which the later one can do by itself.
bool WildCard::AMatch(const char* pattern, const char* text) {
    const char* afterStar = nullptr;
    const char* starEnd = nullptr;  // where the text swallowed by the last star ends
    while (*text != '\0') {
        if (*pattern == '*') {
            afterStar = ++pattern;
            starEnd = text;
        } else if (*pattern == '?' || *pattern == *text) {
            ++pattern;
            ++text;
        } else if (afterStar != nullptr) {
            pattern = afterStar;
            text = ++starEnd;
        } else {
            return false;
        }
    }
    while (*pattern == '*') {
        ++pattern;
    }
    return *pattern == '\0';
}

bool WildCard::Match(const std::string& pattern, const std::string& text) {
    return AMatch(pattern.c_str(), text.c_str());
}

}  // namespace varno_zpk
