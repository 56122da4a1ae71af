// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <optional>
#include <string>

/// The process's environment, read at each call. Main thread only: the environment has no lock.
class ZPKEnvironment {
public:
    ZPKEnvironment() = delete;

    /// The variable's value; nothing when it is unset or empty, which counts as unset throughout.
    static std::optional<std::string> value(const char* variable);

    /// The same for a variable that holds an absolute path, without trailing separators; any other
    /// value counts as unset.
    static std::optional<std::string> absolutePath(const char* variable);

    static bool isSet(const char* variable) { return value(variable).has_value(); }
};
