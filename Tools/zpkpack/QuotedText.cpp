// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/QuotedText.h"

namespace zpk_packager {

std::string QuotedText::of(std::string_view text) {
    std::string result = "\"";
    for (const char each : text) {
        if (each == '"' || each == '\\') {
            result += '\\';
            result += each;
        } else if (each == '\n') {
            result += "\\n";
        } else if (each == '\t') {
            result += "\\t";
        } else {
            result += each;
        }
    }
    return result + "\"";
}

}  // namespace zpk_packager
