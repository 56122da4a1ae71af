// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/Terminal/ZPKPercentText.h"

#include <string_view>

#include "Base/ZPKUnicode.h"

namespace {

enum class Digits { European, Arabic };

/// What stands around the number. The blanks are no-break spaces: the sign stays on the number's line.
struct Style {
    std::string_view language;
    std::string_view before;
    std::string_view after;
    Digits digits = Digits::European;
};

constexpr Style kStyles[] = {
    {"ar", "", "\u066A", Digits::Arabic},
    {"de", "", "\u00A0%"},
    {"es", "", "\u00A0%"},
    {"fr", "", "\u00A0%"},
    {"ru", "", "\u00A0%"},
    {"tr", "%", ""},
};
constexpr Style kUsualStyle = {"", "", "%"};

constexpr char32_t kArabicZero = 0x0660;

const Style& styleOfLanguage(std::string_view code) {
    const std::string_view language = code.substr(0, code.find_first_of("_-"));
    for (const Style& style : kStyles) {
        if (style.language == language) {
            return style;
        }
    }
    return kUsualStyle;
}

bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

std::string inDigits(Digits digits, const std::string& number) {
    if (digits == Digits::European) {
        return number;
    }
    std::string text;
    for (const char character : number) {
        if (isDigit(character)) {
            ZPKUnicode::append(text, kArabicZero + static_cast<char32_t>(character - '0'));
        } else {
            text += character;
        }
    }
    return text;
}

}  // namespace

std::string ZPKPercentText::of(int percent, const std::string& language) {
    const Style& style = styleOfLanguage(language);
    return std::string(style.before) + inDigits(style.digits, std::to_string(percent)) +
           std::string(style.after);
}

std::string ZPKPercentText::digits(const std::string& text, const std::string& language) {
    return inDigits(styleOfLanguage(language).digits, text);
}
