// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <errno.h>

#include <string>

namespace zpk_test {

/// `text` with everything that a regular expression would take for more than itself escaped.
inline std::string regexFor(const std::string& text) {
    std::string regex;
    for (const char character : text) {
        if (std::string("\\^$.|?*+()[]{}").find(character) != std::string::npos) {
            regex += '\\';
        }
        regex += character;
    }
    return regex;
}

/// The whole report of a failed assertion, for `testing::MatchesRegex`. `line` is a regular
/// expression too: a number where the line is fixed, any number by default.
inline std::string assertionReport(const std::string& file, const std::string& function,
                                   const std::string& expression, const std::string& line = "[0-9]+") {
    return regexFor(std::string(program_invocation_short_name) + ": " + file + ":") + line +
           regexFor(": " + function + ": Assertion `" + expression + "' failed.\n");
}

}  // namespace zpk_test
