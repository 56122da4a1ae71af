// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Base/ZPKEnvironment.h"

#include <unistd.h>

#include <cstdlib>
#include <vector>

#include "Base/ZPKPath.h"

namespace {

/// Empty until something is kept; the texts themselves are where the environment had them, and stay there.
std::vector<char*>& keptEntries() {
    static std::vector<char*> entries;
    return entries;
}

std::string_view nameOf(std::string_view entry) {
    return entry.substr(0, entry.find('='));
}

}  // namespace

std::optional<std::string> ZPKEnvironment::value(const char* variable) {
    const char* const text = std::getenv(variable);
    return text == nullptr || *text == '\0' ? std::nullopt : std::optional<std::string>(text);
}

std::optional<std::string> ZPKEnvironment::absolutePath(const char* variable) {
    const std::optional<std::string> text = value(variable);
    if (!text || text->front() != '/') {
        return std::nullopt;
    }
    return ZPKPath::withoutTrailingSeparators(*text);
}

void ZPKEnvironment::keepForChildren() {
    std::vector<char*>& kept = keptEntries();
    kept.clear();
    for (char** entry = environ; *entry != nullptr; ++entry) {
        kept.push_back(*entry);
    }
    kept.push_back(nullptr);
}

char** ZPKEnvironment::ofChildren() {
    return keptEntries().empty() ? environ : keptEntries().data();
}

void ZPKEnvironment::remove(bool (*isUnwanted)(std::string_view name)) {
    char** place = environ;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        if (!isUnwanted(nameOf(*entry))) {
            *place++ = *entry;
        }
    }
    *place = nullptr;
}
