// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Base/ZPKEnvironment.h"

#include <cstdlib>

#include "Base/ZPKPath.h"

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
