// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <optional>
#include <string>
#include <string_view>

/// The process's environment, read at each call. Main thread only, except where said: the environment has
/// no lock.
class ZPKEnvironment {
public:
    ZPKEnvironment() = delete;

    /// The variable's value; nothing when it is unset or empty, which counts as unset throughout.
    static std::optional<std::string> value(const char* variable);

    /// The same for a variable that holds an absolute path, without trailing separators; any other
    /// value counts as unset.
    static std::optional<std::string> absolutePath(const char* variable);

    static bool isSet(const char* variable) { return value(variable).has_value(); }

    /// Keeps what the environment holds now, in its order, for the child processes of later; from now on
    /// changes are this process's own affair. To be called once, before another thread starts.
    static void keepForChildren();

    /// What child processes are to find: what was kept, else the environment as it is. Ends with a null
    /// pointer. Any thread.
    static char** ofChildren();

    /// Takes away every variable whose name `isUnwanted` says yes to.
    static void remove(bool (*isUnwanted)(std::string_view name));
};
