// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Platform/ZPKPreferredLanguages.h"

#include <algorithm>
#include <optional>

#include "Base/ZPKEnvironment.h"

namespace {

bool isUntranslated(const std::string& locale) {
    return locale.empty() || locale == "C" || locale == "POSIX";
}

std::string messagesLocale() {
    for (const char* const variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        if (std::optional<std::string> value = ZPKEnvironment::value(variable)) {
            return *value;
        }
    }
    return {};
}

/// The colon list of locales that messages are looked for in.
std::string messagesLocales() {
    const std::string locale = messagesLocale();
    return isUntranslated(locale) ? locale : ZPKEnvironment::value("LANGUAGE").value_or(locale);
}

void appendOnce(std::vector<std::string>& languages, const std::string& language) {
    if (std::find(languages.begin(), languages.end(), language) == languages.end()) {
        languages.push_back(language);
    }
}

/// `name` is a locale without codeset and modifier.
void appendLanguagesOfLocale(std::vector<std::string>& languages, const std::string& name) {
    appendOnce(languages, name);
    const std::size_t separator = name.find('_');
    if (separator != std::string::npos && separator > 0) {
        appendOnce(languages, name.substr(0, separator));
    }
    if (name == "zh_CN" || name == "zh_SG" || name == "zh") {
        appendOnce(languages, "zh-Hans");
    }
}

}  // namespace

std::vector<std::string> ZPKPreferredLanguages::current() {
    std::vector<std::string> languages;
    const std::string locales = messagesLocales() + ':';
    for (std::size_t start = 0; start < locales.size();) {
        const std::size_t end = locales.find(':', start);
        const std::string locale = locales.substr(start, end - start);
        start = end + 1;
        const std::string name = locale.substr(0, locale.find_first_of(".@"));
        if (name == "C" || name == "POSIX") {
            // The person takes the untranslated texts before whatever follows.
            break;
        }
        if (!name.empty()) {
            appendLanguagesOfLocale(languages, name);
        }
    }
    return languages;
}
