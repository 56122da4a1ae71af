// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Platform/ZPKWorkspace.h"

#include <algorithm>
#include <cstdlib>
#include <optional>

#include "Platform/ZPKBlockDevice.h"
#include "Platform/ZPKBundle.h"
#include "Platform/ZPKMountTable.h"
#include "Platform/ZPKProcess.h"

namespace {

/// The value of an environment variable; an empty text when it is unset.
std::string environmentValue(const char* variable) {
    const char* const value = std::getenv(variable);
    return value == nullptr ? std::string() : std::string(value);
}

bool isUntranslated(const std::string& locale) {
    return locale.empty() || locale == "C" || locale == "POSIX";
}

std::string messagesLocale() {
    for (const char* const variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        if (std::string value = environmentValue(variable); !value.empty()) {
            return value;
        }
    }
    return {};
}

/// The colon list of locales that messages are looked for in.
std::string messagesLocales() {
    const std::string locale = messagesLocale();
    const std::string list = environmentValue("LANGUAGE");
    return isUntranslated(locale) || list.empty() ? locale : list;
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

std::vector<ZPKRunningApplication> ZPKWorkspace::runningApplications() {
    std::vector<ZPKRunningApplication> applications;
    for (const pid_t identifier : ZPKProcess::identifiers()) {
        const std::optional<std::string> program = ZPKProcess::executablePath(std::to_string(identifier));
        const std::optional<ZPKBundle> bundle = program ? ZPKBundle::bundleOfProgram(*program) : std::nullopt;
        if (bundle) {
            applications.push_back({bundle->localizedName(), identifier});
        }
    }
    return applications;
}

std::vector<std::string> ZPKWorkspace::mountedRemovableMedia() {
    return mountedRemovableMedia(ZPKMountTable::current());
}

std::vector<std::string> ZPKWorkspace::mountedRemovableMedia(const ZPKMountTable& table) {
    std::vector<std::string> paths;
    for (const ZPKMount& mount : table.mounts()) {
        const std::optional<ZPKBlockDevice> device = ZPKBlockDevice::ofMount(mount);
        if (device &&
            (device->hasRemovableMedium() || device->isMarked("ID_CDROM") || device->isPluggable())) {
            paths.push_back(mount.target);
        }
    }
    return paths;
}

std::vector<std::string> ZPKWorkspace::preferredLanguages() {
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
